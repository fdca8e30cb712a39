#include "recorder/sampler.h"

#include <iterator>
#include <string>

#include "platform/pixelgrid.h"

namespace tarvoke::recorder {
namespace {

// The virtual keys that the tick treats apart from the others.
enum Key : uint8_t {
    LeftButton = 1,
    RightButton = 2,
    Cancel = 3,
    MiddleButton = 4,
    Ctrl = 17,
    Digit0 = 48,
    Digit4 = 52,  // Ctrl+4: the lines that select the window under the pointer
    Digit5 = 53,  // Ctrl+5: move to the colour under the pointer
    Digit6 = 54,  // Ctrl+6: mouse moves on or off
    Digit7 = 55,  // Ctrl+7: extended clicks on or off
    LeftCtrl = 162,
    RightCtrl = 163,
    LastKey = 254,
};

constexpr uint8_t kHotkeyDigits[] = {Digit0, Digit4, Digit5, Digit6, Digit7};

int hotkeyIndex(uint8_t vk) {
    for (int i = 0; i < static_cast<int>(std::size(kHotkeyDigits)); ++i)
        if (kHotkeyDigits[i] == vk) return i;
    return -1;
}

using engine::Command;

std::string pointText(platform::Point point) { return std::to_string(point.x) + "," + std::to_string(point.y); }

}  // namespace

void removeLastCtrlDown(std::string& text) {
    for (const char* vk : {"163", "162"}) {
        const std::string press = call(Command::KeyDown) + vk + ");\n";
        const size_t found = text.rfind(press);
        if (found != std::string::npos) {
            text.erase(found, press.size());
            return;
        }
    }
}

void Sampler::addLine(const std::string& line) {
    ++m_state.linesOffered;
    // After Ctrl+8 in the main window the first two lines are the releases
    // of that hotkey; the event clock runs on through them.
    if (m_kind == Form::Main && m_state.startedByHotkey && m_state.linesOffered <= 2) return;
    if (m_state.skipNextLine) {
        m_state.skipNextLine = false;
        return;
    }
    m_state.script += call(Command::Pause) + std::to_string(m_clocks.readEventClock()) + ");\n" + line + "\n";
    m_clocks.startEventClock();
}

// The order of the tick is part of the recording's meaning: the hotkey
// digits end a tick before the keys behind them are looked at.
void Sampler::tick(std::optional<platform::Point> pointer) {
    m_pointer = pointer;
    sampleButton(LeftButton, m_form.leftDown, {Command::LeftDown, Command::LeftUp, Command::LeftDownEx, Command::LeftUpEx});
    sampleButton(RightButton, m_form.rightDown,
                 {Command::RightDown, Command::RightUp, Command::RightDownEx, Command::RightUpEx});
    sampleButton(MiddleButton, m_form.middleDown,
                 {Command::MiddleDown, Command::MiddleUp, Command::MiddleDownEx, Command::MiddleUpEx});
    if (m_state.mouseMoves) sampleMove();
    plainKey(Cancel);
    plainKeys(MiddleButton + 1, Ctrl - 1);
    plainKeys(Ctrl + 1, Digit0 - 1);
    if (!hotkey(Digit0)) return;
    plainKeys(Digit0 + 1, Digit4 - 1);
    for (uint8_t digit = Digit4; digit <= Digit7; ++digit)
        if (!hotkey(digit)) return;
    plainKeys(Digit7 + 1, LeftCtrl - 1);
    ctrlKey(LeftCtrl);
    ctrlKey(RightCtrl);
    plainKeys(RightCtrl + 1, LastKey);
}

platform::Point Sampler::cursor() { return m_pointer ? *m_pointer : m_input.cursorPos(); }

void Sampler::sampleButton(uint8_t vk, bool& flag, const ButtonCommands& commands) {
    const bool down = m_keys.isDown(vk);
    if (down == flag) return;
    const platform::Point at = cursor();
    if (m_state.extendedClicks) addLine(call(down ? commands.downEx : commands.upEx) + pointText(at) + ");");
    else addLine(call(down ? commands.down : commands.up) + ");");
    flag = down;
}

// A move along one axis alone writes nothing until the other one changes too.
void Sampler::sampleMove() {
    const platform::Point at = cursor();
    if (at.x == m_form.lastMove.x || at.y == m_form.lastMove.y) return;
    addLine(call(Command::MoveMouse) + pointText(at) + ");");
    m_form.lastMove = at;
}

void Sampler::plainKey(uint8_t vk) {
    const bool down = m_keys.isDown(vk);
    bool& open = m_state.keyOpen[vk];
    if (down == open) return;
    addLine(call(down ? Command::KeyDown : Command::KeyUp) + std::to_string(vk) + ");");
    open = down;
}

void Sampler::plainKeys(uint8_t first, uint8_t last) {
    for (int vk = first; vk <= last; ++vk) plainKey(static_cast<uint8_t>(vk));
}

// A hotkey acts once per press of its digit, and leaves no KeyDown of the
// digit; a digit released while Ctrl is still down holds the tick.
bool Sampler::hotkey(uint8_t vk) {
    const int index = hotkeyIndex(vk);
    const bool down = m_keys.isDown(vk);
    bool& open = m_state.keyOpen[vk];
    if (down && !open) {
        if (!m_keys.isDown(Ctrl)) {
            plainKey(vk);
            return true;
        }
        if (!m_state.hotkeyActed[index]) {
            actOnHotkey(vk);
            m_state.hotkeyActed[index] = true;
        }
        return false;
    }
    if (!down) {
        m_state.hotkeyActed[index] = false;
        if (open) {
            if (m_keys.isDown(Ctrl)) return false;
            plainKey(vk);
        }
    }
    return true;
}

// A Ctrl release waits until no hotkey digit is down.
void Sampler::ctrlKey(uint8_t vk) {
    const bool down = m_keys.isDown(vk);
    bool& open = m_state.keyOpen[vk];
    if (down && !open) {
        plainKey(vk);
    } else if (!down && open) {
        for (uint8_t digit : kHotkeyDigits)
            if (m_keys.isDown(digit)) return;
        plainKey(vk);
    }
}

void Sampler::actOnHotkey(uint8_t vk) {
    switch (vk) {
    case Digit4:
        removeLastCtrlDown(m_state.script);
        addLine(m_hooks.windowSelection ? m_hooks.windowSelection() : std::string());
        m_state.skipNextLine = true;
        break;
    case Digit5:
        sampleColour();
        break;
    case Digit6:
        removeLastCtrlDown(m_state.script);
        m_state.mouseMoves = !m_state.mouseMoves;
        m_state.skipNextLine = true;
        break;
    case Digit7:
        removeLastCtrlDown(m_state.script);
        m_state.extendedClicks = !m_state.extendedClicks;
        m_state.skipNextLine = true;
        break;
    default:
        break;  // Ctrl+0 ends the recording elsewhere
    }
}

// The block plays back as: take a new picture, move to that one colour.
void Sampler::sampleColour() {
    removeLastCtrlDown(m_state.script);
    if (m_hooks.captureTemp) m_hooks.captureTemp();
    const platform::Point cursor = m_input.cursorPos();
    const uint32_t pixel = m_hooks.tempPixel ? m_hooks.tempPixel(cursor) : 0;
    const std::string red = std::to_string(platform::redOf(pixel));
    const std::string green = std::to_string(platform::greenOf(pixel));
    const std::string blue = std::to_string(platform::blueOf(pixel));
    const std::string bound = red + ", " + blue + ", " + green;
    addLine(call(Command::CaptureScreen) + "imagesave0);");
    addLine(call(Command::CreateColorRange) + "colorrange0, " + bound + ", " + bound + ");");
    addLine(call(Command::MoveMouseToColorRange) + "imagesave0, colorrange0);");
    m_state.skipNextLine = true;
}

}  // namespace tarvoke::recorder
