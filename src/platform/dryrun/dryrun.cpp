#include "platform/dryrun/dryrun.h"

#include <cstdio>

#include "platform/dryrun/dryrunpictures.h"

namespace tarvoke::platform::dryrun {

std::string quoted(std::string_view text) {
    std::string out = "\"";
    for (unsigned char c : text) {
        if (c == '\\' || c == '"') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", c);
            out += escaped;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

std::string quotedOrNull(const std::optional<std::string>& text) { return text ? quoted(*text) : "null"; }

void DryRunInput::setCursorPos(int32_t x, int32_t y) {
    m_cursor = {x, y};
    m_sink("SetCursorPos " + std::to_string(x) + " " + std::to_string(y));
}

void DryRunInput::mouseEvent(uint32_t flags) { m_sink("mouse_event " + std::to_string(flags)); }

void DryRunInput::keyEvent(uint8_t vk, uint32_t flags) {
    m_sink("keybd_event " + std::to_string(vk) + " " + std::to_string(flags));
}

void DryRunInput::sendKeys(const std::string& keys, KeyStrokes&) { m_sink("SendKeys " + quoted(keys)); }

void DryRunInput::sendMessage(WindowId window, uint32_t message, uint32_t key, uint32_t point) {
    char packed[16];
    std::snprintf(packed, sizeof packed, "0x%08X", point);
    m_sink("SendMessage " + std::to_string(window) + " " + std::to_string(message) + " " + std::to_string(key) +
           " " + packed);
}

WindowId DryRunWindows::findWindow(const std::optional<std::string>& windowClass, const std::optional<std::string>& title) {
    m_sink("FindWindow " + quotedOrNull(windowClass) + " " + quotedOrNull(title));
    return 0;
}

WindowId DryRunWindows::findWindowEx(WindowId parent, WindowId, const std::optional<std::string>& windowClass,
                                     const std::optional<std::string>&) {
    // No window exists, so only a look-up among the top-level windows is made.
    if (parent == 0) m_sink("FindWindowEx " + std::to_string(parent) + " " + quotedOrNull(windowClass));
    return 0;
}

void DryRunPrograms::shellExecute(const std::string& verb, const std::string& file, const std::string& parameters,
                                  int32_t show) {
    m_sink("ShellExecute " + quoted(verb) + " " + quoted(file) + " " + quoted(parameters) + " " + std::to_string(show));
}

bool DryRunScreen::capture(PixelGrid& grid) {
    m_sink("CaptureScreen");
    if (m_picture.empty()) grid.resize(m_size.width, m_size.height);
    else grid = m_picture;
    return true;
}

void DryRunScreen::setPicture(PixelGrid picture) {
    m_picture = std::move(picture);
    if (!m_picture.empty()) m_size = {m_picture.width, m_picture.height};
}

void DryRunClock::yield() {
    if (m_pump) m_pump();
}

void DryRunClock::wait(int32_t ms) {
    m_sink("Wait " + std::to_string(ms));
    if (ms > 0) m_nowMs += ms;
    yield();
}

void DryRunMessageBoxes::show(uint32_t flags, const std::string& title, const std::string& text) {
    m_sink("MessageBox " + std::to_string(flags) + " " + quoted(title) + " " + quoted(text));
}

DryRunPlatform::DryRunPlatform(LineSink sink, std::function<void()> pump)
    : m_input(sink), m_windows(sink), m_programs(sink), m_screen(sink), m_clock(sink, std::move(pump)), m_messages(sink),
      m_pictures(std::make_unique<DryRunPictures>(sink)) {}

DryRunPlatform::~DryRunPlatform() = default;

void DryRunPlatform::setPictureFiles(Pictures* files, bool writes) { m_pictures->setFiles(files, writes); }

Platform DryRunPlatform::platform() {
    return {&m_input, &m_keys, &m_windows, &m_programs, &m_screen, &m_clock, &m_messages, m_pictures.get()};
}

}  // namespace tarvoke::platform::dryrun
