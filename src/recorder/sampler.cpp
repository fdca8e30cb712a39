#include "recorder/sampler.h"

#include <string>

#include "screen/pixelgrid.h"

namespace tarvoke::recorder {
namespace {

constexpr uint8_t kCtrl = 17;
constexpr uint8_t kHotkeyDigits[] = {48, 52, 53, 54, 55};

int hotkeyIndex(uint8_t vk) {
    for (int i = 0; i < 5; ++i)
        if (kHotkeyDigits[i] == vk) return i;
    return -1;
}

using engine::Command;

std::string pointText(platform::Point point) { return std::to_string(point.x) + "," + std::to_string(point.y); }

// The start of a statement: the command's name as scripts write it and "(".
std::string call(Command command) { return std::string(engine::scriptName(command)) + "("; }

}  // namespace

void RemoveLastCtrlDown(std::string& text) {
    for (const char* vk : {"163", "162"}) {
        const std::string press = call(Command::KeyDown) + vk + ");\n";
        const size_t found = text.rfind(press);
        if (found != std::string::npos) {
            text.erase(found, press.size());
            return;
        }
    }
}

void Sampler::AddRecordedLine(const std::string& sLine) {
    ++m_state.lngEventCount;
    // After Ctrl+8 in the main window the first two lines are the releases
    // of that hotkey; the event clock runs on through them.
    if (m_kind == Form::Main && m_state.bHotkeyRecord && m_state.lngEventCount <= 2) return;
    if (m_state.bSkipNextLine) {
        m_state.bSkipNextLine = false;
        return;
    }
    m_state.sScriptText += call(Command::Pause) + std::to_string(m_clocks.readEventClock()) + ");\n" + sLine + "\n";
    m_clocks.startEventClock();
}

// The order of the tick is part of the recording's meaning: the hotkey
// digits end a tick before the keys behind them are looked at.
void Sampler::tick(std::optional<platform::Point> pointer) {
    m_pointer = pointer;
    sampleButton(1, m_form.bLeftDown, {Command::LeftDown, Command::LeftUp, Command::LeftDownEx, Command::LeftUpEx});
    sampleButton(2, m_form.bRightDown,
                 {Command::RightDown, Command::RightUp, Command::RightDownEx, Command::RightUpEx});
    sampleButton(4, m_form.bMiddleDown,
                 {Command::MiddleDown, Command::MiddleUp, Command::MiddleDownEx, Command::MiddleUpEx});
    if (m_state.bMouseMove) sampleMove();
    plainKey(3);
    plainKeys(5, 16);
    plainKeys(18, 47);
    if (!hotkey(48)) return;
    plainKeys(49, 51);
    for (uint8_t digit = 52; digit <= 55; ++digit)
        if (!hotkey(digit)) return;
    plainKeys(56, 161);
    ctrlKey(162);
    ctrlKey(163);
    plainKeys(164, 254);
}

platform::Point Sampler::cursor() { return m_pointer ? *m_pointer : m_input.cursorPos(); }

void Sampler::sampleButton(uint8_t vk, bool& flag, const ButtonCommands& commands) {
    const bool down = m_keys.isDown(vk);
    if (down == flag) return;
    const platform::Point at = cursor();
    if (m_state.bExtendedClicks) AddRecordedLine(call(down ? commands.downEx : commands.upEx) + pointText(at) + ");");
    else AddRecordedLine(call(down ? commands.down : commands.up) + ");");
    flag = down;
}

// A move along one axis alone writes nothing until the other one changes too.
void Sampler::sampleMove() {
    const platform::Point at = cursor();
    if (at.x == m_form.ptLastMove.x || at.y == m_form.ptLastMove.y) return;
    AddRecordedLine(call(Command::MoveMouse) + pointText(at) + ");");
    m_form.ptLastMove = at;
}

void Sampler::plainKey(uint8_t vk) {
    const bool down = m_keys.isDown(vk);
    bool& open = m_state.intKeyState[vk];
    if (down == open) return;
    AddRecordedLine(call(down ? Command::KeyDown : Command::KeyUp) + std::to_string(vk) + ");");
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
    bool& open = m_state.intKeyState[vk];
    if (down && !open) {
        if (!m_keys.isDown(kCtrl)) {
            plainKey(vk);
            return true;
        }
        if (!m_state.bHotkeyActed[index]) {
            actOnHotkey(vk);
            m_state.bHotkeyActed[index] = true;
        }
        return false;
    }
    if (!down) {
        m_state.bHotkeyActed[index] = false;
        if (open) {
            if (m_keys.isDown(kCtrl)) return false;
            plainKey(vk);
        }
    }
    return true;
}

// A Ctrl release waits until no hotkey digit is down.
void Sampler::ctrlKey(uint8_t vk) {
    const bool down = m_keys.isDown(vk);
    bool& open = m_state.intKeyState[vk];
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
    case 52:
        RemoveLastCtrlDown(m_state.sScriptText);
        AddRecordedLine(m_hooks.windowSelection ? m_hooks.windowSelection() : std::string());
        m_state.bSkipNextLine = true;
        break;
    case 53:
        sampleColour();
        break;
    case 54:
        RemoveLastCtrlDown(m_state.sScriptText);
        m_state.bMouseMove = !m_state.bMouseMove;
        m_state.bSkipNextLine = true;
        break;
    case 55:
        RemoveLastCtrlDown(m_state.sScriptText);
        m_state.bExtendedClicks = !m_state.bExtendedClicks;
        m_state.bSkipNextLine = true;
        break;
    default:
        break;  // Ctrl+0 ends the recording elsewhere
    }
}

// The block plays back as: take a new picture, move to that one colour.
void Sampler::sampleColour() {
    RemoveLastCtrlDown(m_state.sScriptText);
    if (m_hooks.captureTemp) m_hooks.captureTemp();
    const platform::Point cursor = m_input.cursorPos();
    const uint32_t pixel = m_hooks.tempPixel ? m_hooks.tempPixel(cursor) : 0;
    const std::string red = std::to_string(screen::redOf(pixel));
    const std::string green = std::to_string(screen::greenOf(pixel));
    const std::string blue = std::to_string(screen::blueOf(pixel));
    const std::string bound = red + ", " + blue + ", " + green;
    AddRecordedLine(call(Command::CaptureScreen) + "imagesave0);");
    AddRecordedLine(call(Command::CreateColorRange) + "colorrange0, " + bound + ", " + bound + ");");
    AddRecordedLine(call(Command::MoveMouseToColorRange) + "imagesave0, colorrange0);");
    m_state.bSkipNextLine = true;
}

}  // namespace tarvoke::recorder
