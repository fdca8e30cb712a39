#pragma once
// What a recording keeps between the ticks of the sampler.

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/types.h"

namespace tarvoke::recorder {

// The two main windows sample alike but for one step (see addLine).
enum class Form { Main, Basic };

// Shared by both windows' samplers.
struct RecorderState {
    std::string script;                 // the growing recording
    std::array<bool, 256> keyOpen{};    // true: a KeyDown line stands open
    int32_t linesOffered = 0;           // lines offered to addLine
    bool skipNextLine = false;
    std::array<bool, 5> hotkeyActed{};  // for the digits 0, 4, 5, 6, 7
    bool startedByHotkey = false;       // started by Ctrl+8 in the main window
    bool mouseMoves = true;
    bool extendedClicks = true;
    bool recording = false;
    int32_t seconds = 0;
};

// Kept by each window's sampler; the button flags outlive a recording.
struct FormState {
    bool leftDown = false;
    bool rightDown = false;
    bool middleDown = false;
    platform::Point lastMove;
};

// The two stopwatches of the timing commands, as the recorder uses them.
struct Stopwatches {
    std::function<void()> startEventClock;
    std::function<int32_t()> readEventClock;
    std::function<void()> startRunClock;
    std::function<int32_t()> readRunClock;
};

}  // namespace tarvoke::recorder
