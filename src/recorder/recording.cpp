#include "recorder/recording.h"

#include "recorder/sampler.h"

namespace tarvoke::recorder {

void startRecording(RecorderState& state, FormState& form, platform::KeyState& keys, platform::Input& input,
                    const Stopwatches& clocks) {
    state.sScriptText.clear();
    state.lngEventCount = 0;
    state.lngSeconds = 0;
    state.bSkipNextLine = false;
    state.bHotkeyActed.fill(false);
    state.intKeyState.fill(false);
    keys.followPointer();
    state.intKeyState[3] = keys.isDown(3);
    for (int vk = 5; vk <= 254; ++vk) state.intKeyState[vk] = keys.isDown(static_cast<uint8_t>(vk));
    clocks.startEventClock();
    clocks.startRunClock();
    form.ptLastMove = input.cursorPos();
    state.bRecording = true;
}

void countSecond(RecorderState& state, const Stopwatches& clocks) {
    clocks.readRunClock();
    ++state.lngSeconds;
    clocks.startRunClock();
}

std::string closeRecording(RecorderState& state, const Stopwatches& clocks) {
    const int32_t sinceLastLine = clocks.readEventClock();
    const int32_t milliseconds = clocks.readRunClock();
    state.bRecording = false;
    state.sScriptText += "Pause(" + std::to_string(sinceLastLine) + ");\n";
    // The milliseconds stand without leading zeros: 12 s 45 ms is "12.45".
    state.sScriptText = "Function(Main);\nOrigionalPlayTime(" + std::to_string(state.lngSeconds) + "." +
                        std::to_string(milliseconds) + ");\nSetPausePercent(100);\n\n" + state.sScriptText +
                        "\nEndFunction();";
    RemoveLastCtrlDown(state.sScriptText);
    return state.sScriptText;
}

}  // namespace tarvoke::recorder
