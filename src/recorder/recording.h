#pragma once
// Starting a recording and closing it into a finished script. The windows
// ask the question and hide themselves; this is what the start and the
// close do to the recorder's state.

#include <string>

#include "platform/input.h"
#include "platform/keystate.h"
#include "recorder/recorderstate.h"

namespace tarvoke::recorder {

// The new-script template; Basic Mode records over it without asking.
inline constexpr const char* kNewScriptTemplate = "Function(Main);\n\nEndFunction();";

// Resets the recorder, takes the keys that are down now as already written
// (they give a KeyUp at their release and no KeyDown), starts both clocks.
void startRecording(RecorderState& state, FormState& form, platform::KeyState& keys, platform::Input& input,
                    const Stopwatches& clocks);

// The seconds timer: one more whole second.
void countSecond(RecorderState& state, const Stopwatches& clocks);

// Ends the recording and wraps its lines in the frame of a finished script,
// which also becomes the state's script.
std::string closeRecording(RecorderState& state, const Stopwatches& clocks);

}  // namespace tarvoke::recorder
