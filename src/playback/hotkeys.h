#pragma once
// The hotkey poll: what one tick of the input timer decides from the key
// state. The windows and the player call it from a timer (every millisecond)
// and carry out what it returns; it acts on nothing itself.

#include <vector>

#include "platform/keystate.h"

namespace tarvoke::playback {

enum class Hotkey {
    Stop,       // Ctrl+0
    Pause,      // Ctrl+1, only while a Correct Time run is timed
    Record,     // Ctrl+8, not while recording
    Play,       // Ctrl+9, not while recording
};

struct HotkeyConditions {
    bool correctTimeRunning = false;
    bool recording = false;
    // A long step saw Ctrl+0 held (stopKeysDown) and gave up: Stop fires
    // even if the keys are up again by this tick.
    bool stopSeen = false;
};

// The hotkeys that fire in this tick, in the order they are to be carried
// out (Stop, Pause, Record, Play); usually none.
//
// Nothing is read unless Control is down now. Then every one of the four
// digits is read, also those whose condition is false, because a read takes
// the digit's "pressed since the last read" bit: a digit fires only when it
// is down now and was pressed since the previous tick that read it, so a
// key that merely stays down fires once.
std::vector<Hotkey> pollHotkeys(platform::KeyState& keys, HotkeyConditions conditions = {});

// Whether Ctrl+0 is held now; takes no "pressed since" bit, so the poll
// still sees the press.
bool stopKeysDown(platform::KeyState& keys);

}  // namespace tarvoke::playback
