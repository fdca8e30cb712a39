#pragma once
// The platform for logic tests: every acting operation writes the dry run's
// line into a transcript that a test reads back (handles decimal); windows,
// key state, screen size and cursor are set up by the test; the clock never
// sleeps.

#include <string>
#include <vector>

#include "platform/dryrun/dryrun.h"
#include "platform/fake/fakekeyboard.h"
#include "platform/fake/fakewindows.h"

namespace tarvoke::platform::fake {

// The dry run's input that also presses and releases on the fake keyboard,
// so that what a script sends reads back as down.
class FakeInput : public dryrun::DryRunInput {
public:
    FakeInput(dryrun::LineSink sink, FakeKeyboard& keyboard) : DryRunInput(std::move(sink)), m_keyboard(keyboard) {}
    void mouseEvent(uint32_t flags) override;
    void keyEvent(uint8_t vk, uint32_t flags) override;
    void flush() override { ++flushes; }

    // How often held input was sent on.
    int flushes = 0;

private:
    FakeKeyboard& m_keyboard;
};

class FakePlatform {
public:
    FakePlatform();
    Platform platform();

    std::vector<std::string> transcript;
    int64_t yields = 0;
    // Runs inside every yield, as a handler of the event loop would.
    std::function<void()> onYield;

    FakeKeyboard keyboard = FakeKeyboard::us();
    FakeWindows windows;
    FakeInput input;
    dryrun::DryRunPrograms programs;
    dryrun::DryRunScreen screen;
    dryrun::DryRunClock clock;
    dryrun::DryRunMessageBoxes messages;

private:
    dryrun::LineSink sink();
};

}  // namespace tarvoke::platform::fake
