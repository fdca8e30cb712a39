#pragma once
// The dry-run platform: every acting operation prints one line, nothing
// touches the desktop. The cursor is a virtual one, waits advance a virtual
// clock without sleeping, message boxes print and answer OK, no window exists.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace tarvoke::platform::dryrun {

using LineSink = std::function<void(std::string_view line)>;

// A text in double quotes, with \ and " escaped and control bytes spelt out.
std::string quoted(std::string_view text);
std::string quotedOrNull(const std::optional<std::string>& text);

class DryRunInput : public Input {
public:
    explicit DryRunInput(LineSink sink) : m_sink(std::move(sink)) {}
    void setCursorPos(int32_t x, int32_t y) override;
    Point cursorPos() override { return m_cursor; }
    void mouseEvent(uint32_t flags) override;
    void keyEvent(uint8_t vk, uint32_t flags) override;
    void sendKeys(const std::string& keys, KeyStrokes& strokes) override;
    void sendMessage(WindowId window, uint32_t message, uint32_t key, uint32_t point) override;

private:
    LineSink m_sink;
    Point m_cursor;
};

class DryRunKeyState : public KeyState {
public:
    bool isDown(uint8_t) override { return false; }
    bool pressedSinceLastRead(uint8_t) override { return false; }
};

class DryRunWindows : public Windows {
public:
    explicit DryRunWindows(LineSink sink) : m_sink(std::move(sink)) {}
    WindowId findWindow(const std::optional<std::string>& windowClass, const std::optional<std::string>& title) override;
    WindowId findWindowEx(WindowId parent, WindowId childAfter, const std::optional<std::string>& windowClass,
                          const std::optional<std::string>& title) override;
    WindowId windowFromPoint(Point) override { return 0; }
    WindowId parent(WindowId) override { return 0; }
    std::string className(WindowId) override { return {}; }
    std::string title(WindowId) override { return {}; }

private:
    LineSink m_sink;
};

class DryRunPrograms : public Programs {
public:
    explicit DryRunPrograms(LineSink sink) : m_sink(std::move(sink)) {}
    void shellExecute(const std::string& verb, const std::string& file, const std::string& parameters,
                      int32_t show) override;

private:
    LineSink m_sink;
};

class DryRunScreen : public ScreenCapture {
public:
    explicit DryRunScreen(LineSink sink, Size size = {1920, 1080}) : m_sink(std::move(sink)), m_size(size) {}
    Size screenSize() override { return m_size; }
    bool capture(PixelGrid& grid) override;
    void setSize(Size size) { m_size = size; }
    // Every capture returns this picture, and the screen takes its size.
    void setPicture(PixelGrid picture);

private:
    LineSink m_sink;
    Size m_size;
    PixelGrid m_picture;
};

class DryRunClock : public Clock {
public:
    // pump handles pending events of the real event loop, so that signals
    // and timers keep working during a dry run.
    DryRunClock(LineSink sink, std::function<void()> pump) : m_sink(std::move(sink)), m_pump(std::move(pump)) {}
    void yield() override;
    void wait(int32_t ms) override;
    void cancelWaits() override {}
    int64_t monotonicMs() override { return m_nowMs; }

private:
    LineSink m_sink;
    std::function<void()> m_pump;
    int64_t m_nowMs = 0;
};

class DryRunMessageBoxes : public MessageBoxes {
public:
    explicit DryRunMessageBoxes(LineSink sink) : m_sink(std::move(sink)) {}
    void show(uint32_t flags, const std::string& title, const std::string& text) override;

private:
    LineSink m_sink;
};

// All roles together, printing to one sink.
class DryRunPictures;

class DryRunPlatform {
public:
    DryRunPlatform(LineSink sink, std::function<void()> pump);
    ~DryRunPlatform();
    Platform platform();
    DryRunScreen& screen() { return m_screen; }
    // Picture files are really read through files; they are written only
    // when writes is true, for a dry run acts on nothing and a script may
    // name any path.
    void setPictureFiles(Pictures* files, bool writes = false);

private:
    DryRunInput m_input;
    DryRunKeyState m_keys;
    DryRunWindows m_windows;
    DryRunPrograms m_programs;
    DryRunScreen m_screen;
    DryRunClock m_clock;
    DryRunMessageBoxes m_messages;
    std::unique_ptr<DryRunPictures> m_pictures;
};

}  // namespace tarvoke::platform::dryrun
