#include "recorder/recording.h"

#include "recorder/sampler.h"

namespace tarvoke::recorder {

void startRecording(RecorderState& state, FormState& form, platform::KeyState& keys, platform::Input& input,
                    const Stopwatches& clocks) {
    state.script.clear();
    state.linesOffered = 0;
    state.seconds = 0;
    state.skipNextLine = false;
    state.hotkeyActed.fill(false);
    state.keyOpen.fill(false);
    keys.followPointer();
    state.keyOpen[3] = keys.isDown(3);
    for (int vk = 5; vk <= 254; ++vk) state.keyOpen[vk] = keys.isDown(static_cast<uint8_t>(vk));
    clocks.startEventClock();
    clocks.startRunClock();
    form.lastMove = input.cursorPos();
    state.recording = true;
}

void countSecond(RecorderState& state, const Stopwatches& clocks) {
    clocks.readRunClock();
    ++state.seconds;
    clocks.startRunClock();
}

std::string closeRecording(RecorderState& state, const Stopwatches& clocks) {
    const int32_t sinceLastLine = clocks.readEventClock();
    const int32_t milliseconds = clocks.readRunClock();
    state.recording = false;
    using engine::Command;
    state.script += call(Command::Pause) + std::to_string(sinceLastLine) + ");\n";
    // The milliseconds stand without leading zeros: 12 s 45 ms is "12.45".
    state.script = call(Command::Function) + "Main);\n" + call(Command::OrigionalPlayTime) +
                   std::to_string(state.seconds) + "." + std::to_string(milliseconds) + ");\n" +
                   call(Command::SetPausePercent) + "100);\n\n" + state.script + "\n" + call(Command::EndFunction) + ");";
    removeLastCtrlDown(state.script);
    return state.script;
}

}  // namespace tarvoke::recorder
