#pragma once
// What a recording keeps between the ticks of the sampler.

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/types.h"

namespace tarvoke::recorder {

// The two main windows sample alike but for one step (see AddRecordedLine).
enum class Form { Main, Basic };

// Shared by both windows' samplers.
struct RecorderState {
    std::string sScriptText;              // the growing recording
    std::array<bool, 256> intKeyState{};  // true: a KeyDown line stands open
    int32_t lngEventCount = 0;            // lines offered to AddRecordedLine
    bool bSkipNextLine = false;
    std::array<bool, 5> bHotkeyActed{};   // for the digits 0, 4, 5, 6, 7
    bool bHotkeyRecord = false;           // started by Ctrl+8 in the main window
    bool bMouseMove = true;
    bool bExtendedClicks = true;
    bool bRecording = false;
    int32_t lngSeconds = 0;
};

// Kept by each window's sampler; the button flags outlive a recording.
struct FormState {
    bool bLeftDown = false;
    bool bRightDown = false;
    bool bMiddleDown = false;
    platform::Point ptLastMove;
};

// The two stopwatches of the timing commands, as the recorder uses them.
struct Stopwatches {
    std::function<void()> startEventClock;
    std::function<int32_t()> readEventClock;
    std::function<void()> startRunClock;
    std::function<int32_t()> readRunClock;
};

}  // namespace tarvoke::recorder
