#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "engine/check.h"
#include "platform/fake/fakeplatform.h"
#include "recorder/recorder.h"
#include "recorder/recording.h"
#include "recorder/sampler.h"
#include "recorder/windowselection.h"

namespace tarvoke::recorder {
namespace {

struct FakeKeys : platform::KeyState {
    std::set<int> down;
    bool isDown(uint8_t vk) override { return down.count(vk) > 0; }
    bool pressedSinceLastRead(uint8_t) override { return false; }
};

// The sampler ticked by hand every 10 ms, over a set of virtual keys down.
struct Rig {
    Rig() {
        clocks.startEventClock = [this] { eventStart = now; };
        clocks.readEventClock = [this] { return static_cast<int32_t>(now - eventStart); };
        clocks.startRunClock = [this] { runStart = now; };
        clocks.readRunClock = [this] { return static_cast<int32_t>(now - runStart); };
        hooks.windowSelection = [] { return std::string("SelectWindow(\"c\", \"t\");\n"); };
        hooks.captureTemp = [this] { ++captures; };
        hooks.tempPixel = [](platform::Point) { return 0x00FF8040u; };  // red 255, green 128, blue 64
    }
    void start(const std::set<int>& held, bool mouseMoves) {
        keys.down = held;
        state.mouseMoves = mouseMoves;
        startRecording(state, form, keys, fake.input, clocks);
    }
    void tick(const std::set<int>& down, platform::Point at = {}, Form kind = Form::Main) {
        now += 10;
        keys.down = down;
        fake.input.setCursorPos(at.x, at.y);
        Sampler(state, form, kind, keys, fake.input, clocks, hooks).tick();
    }

    platform::fake::FakePlatform fake;
    RecorderState state;
    FormState form;
    FakeKeys keys;
    Stopwatches clocks;
    SamplerHooks hooks;
    int64_t now = 1000, eventStart = 0, runStart = 0;
    int captures = 0;
};

// Ctrl as a user holds it: the generic 17 and the left 162.
const std::set<int> C = {17, 162};
std::set<int> with(std::set<int> keys, std::initializer_list<int> more) {
    keys.insert(more);
    return keys;
}

struct Tick {
    std::set<int> down;
    platform::Point at{};
};
struct SamplerCase {
    const char* name;
    std::vector<Tick> ticks;
    std::string expected;
    std::set<int> held = {};  // down at the start
    bool mouseMoves = false;
    Form kind = Form::Main;
    bool startedByHotkey = false;
};

const std::string kColour = "CaptureScreen(imagesave0);\nPause(0);\nCreateColorRange(colorrange0, 255, 64, 128, 255, 64, "
                            "128);\nPause(0);\nMoveMouseToColorRange(imagesave0, colorrange0);\n";

// Clicks with and without positions: the click rows of kChangeCases, which drive the same sampler.
const SamplerCase kSamplerCases[] = {
    {"a key held from before the start gives only its release", {{{65}}, {{}}}, "Pause(20);\nKeyUp(65);\n", {65}},
    {"Ctrl+C is four key lines", {{C}, {with(C, {67})}, {C}, {{}}},
     "Pause(10);\nKeyDown(162);\nPause(10);\nKeyDown(67);\nPause(10);\nKeyUp(67);\nPause(10);\nKeyUp(162);\n"},
    {"Shift is the generic and the sided key", {{{16, 160}}, {{}}},
     "Pause(10);\nKeyDown(16);\nPause(0);\nKeyDown(160);\nPause(10);\nKeyUp(16);\nPause(0);\nKeyUp(160);\n"},
    {"digits without Ctrl and other digits with Ctrl are keys", {{{48}}, {{}}, {with(C, {49})}, {{}}},
     "Pause(10);\nKeyDown(48);\nPause(10);\nKeyUp(48);\nPause(10);\nKeyDown(49);\nPause(0);\nKeyDown(162);\n"
     "Pause(10);\nKeyUp(49);\nPause(0);\nKeyUp(162);\n"},
    {"Ctrl+4 writes the window lines and nothing of the keys", {{C}, {with(C, {52})}, {with(C, {52})}, {C}, {{}}, {{65}}},
     "Pause(10);\nPause(10);\nSelectWindow(\"c\", \"t\");\n\nPause(40);\nKeyDown(65);\n"},
    {"Ctrl+5 samples the colour on every press; each Ctrl press is taken out, its release swallowed",
     {{C}, {with(C, {53})}, {{}}, {C}, {with(C, {53})}, {{}}},
     "Pause(10);\nPause(10);\n" + kColour + "Pause(20);\nPause(10);\n" + kColour},
    {"Ctrl+6 turns mouse moves off once however long it is held",
     {{C}, {with(C, {54})}, {with(C, {54})}, {with(C, {54})}, {with(C, {54})}, {C}, {{}}, {{}, {30, 40}}},
     "Pause(10);\n", {}, true},
    {"only diagonal moves are written", {{{}, {10, 0}}, {{}, {20, 5}}, {{}, {30, 5}}}, "Pause(20);\nMoveMouse(20,5);\n",
     {}, true},
    {"a hotkey start drops two lines in the main window", {{{56}}, {{}}, {{65}}}, "Pause(30);\nKeyDown(65);\n", {},
     false, Form::Main, true},
    {"a hotkey start drops nothing in the basic window", {{{56}}, {{}}, {{65}}},
     "Pause(10);\nKeyDown(56);\nPause(10);\nKeyUp(56);\nPause(10);\nKeyDown(65);\n", {}, false, Form::Basic, true},
};

TEST(Recorder, SamplerWritesOneLinePerChange) {
    for (const SamplerCase& c : kSamplerCases) {
        SCOPED_TRACE(c.name);
        Rig rig;
        rig.start(c.held, c.mouseMoves);
        rig.state.startedByHotkey = c.startedByHotkey;
        for (const Tick& t : c.ticks) rig.tick(t.down, t.at, c.kind);
        EXPECT_EQ(rig.state.script, c.expected);
        size_t blocks = 0;
        for (size_t at = 0; (at = c.expected.find(kColour, at)) != std::string::npos; at += kColour.size()) ++blocks;
        EXPECT_EQ(rig.captures, static_cast<int>(blocks));
    }
}

class CloseTest : public Rig, public ::testing::Test {};

TEST_F(CloseTest, FramesTheLinesWithThePlayTimeAndALastPause) {
    start({}, false);
    now += 1005;
    countSecond(state, clocks);
    now += 7;
    EXPECT_EQ(closeRecording(state, clocks),
              "Function(Main);\nOrigionalPlayTime(1.7);\nSetPausePercent(100);\n\nPause(1012);\n\nEndFunction();");
    // Ctrl and 0 first seen in one tick: the 0 ends the tick before Ctrl is read, and the close takes out Ctrl.
    start({}, false);
    tick({65});
    tick(with(C, {48, 65}));
    tick(with(C, {65}));
    now += 7;
    state.seconds = 5;
    EXPECT_EQ(closeRecording(state, clocks),
              "Function(Main);\nOrigionalPlayTime(5.37);\nSetPausePercent(100);\n\n"
              "Pause(10);\nKeyDown(65);\nPause(20);\nPause(7);\n\nEndFunction();");
}

TEST(Recorder, RemoveLastCtrlDownPrefersTheRightCtrlThenTheLeft) {
    std::string text = "KeyDown(162);\nKeyDown(163);\nKeyDown(162);\nKeyUp(163);\n";
    removeLastCtrlDown(text);
    EXPECT_EQ(text, "KeyDown(162);\nKeyDown(162);\nKeyUp(163);\n");
    removeLastCtrlDown(text);
    EXPECT_EQ(text, "KeyDown(162);\nKeyUp(163);\n");
}

TEST(Recorder, WindowSelectionIsTheTopLevelThenItsChildrenCutAt99Bytes) {
    platform::fake::FakePlatform fake;
    const auto dialog = fake.windows.addWindow("dialog", "Save; now");
    const auto button = fake.windows.addWindow("button", "OK", fake.windows.addWindow("panel", "p", dialog));
    fake.windows.setWindowAtPoint(button);
    EXPECT_EQ(windowSelection(fake.windows, fake.input),
              "SelectWindow(\"dialog\", \"Save; now\");\nSelectSubWindow(\"panel\");\nSelectSubWindow(\"button\");\n");
    fake.windows.setWindowAtPoint(fake.windows.addWindow("top", ""));
    EXPECT_EQ(windowSelection(fake.windows, fake.input), "SelectWindow(\"top\", \"\");\n");
    EXPECT_EQ(cutWindowText(std::string(120, 'a')).size(), 99u);
    EXPECT_EQ(cutWindowText(std::string(98, 'a') + "\xc3\xa9"), std::string(98, 'a'));  // the é would straddle the cut
}

// The recorder driven by the key state's changes, as the X11 key state
// tells them from raw events: one tick per change, timed by its stamp.

struct TestClock : platform::Clock {
    int64_t now = 0;
    void yield() override {}
    void wait(int32_t) override {}
    void cancelWaits() override {}
    int64_t monotonicMs() override { return now; }
};

// What the user did, stamped by the display and read `late` ms after.
struct Step {
    enum What { Press, Release, Move } what;
    uint32_t stamp;
    int vk = 0;
    platform::Point at{};
    int late = 0;
};
using enum Step::What;

struct ChangeCase {
    const char* name;
    bool mouseMove, extendedClicks;
    int64_t start;  // local time of the start
    int64_t skew;   // the display's clock ahead of the local one
    std::vector<Step> steps;
    std::string expected;
};

const ChangeCase kChangeCases[] = {
    {"a click with no hold after a move: both lines, Pause(0) between", true, true, 1000, 0,
     {{Move, 1010, 0, {300, 300}}, {Press, 1020, 1, {300, 300}}, {Release, 1020, 1, {300, 300}}},
     "Pause(10);\nMoveMouse(300,300);\nPause(10);\nLeftDownEx(300,300);\nPause(0);\nLeftUpEx(300,300);\n"},
    {"keys typed within one millisecond", false, false, 1000, 0,
     {{Press, 1005, 65}, {Release, 1005, 65}, {Press, 1005, 66}, {Release, 1006, 66}},
     "Pause(5);\nKeyDown(65);\nPause(0);\nKeyUp(65);\nPause(0);\nKeyDown(66);\nPause(1);\nKeyUp(66);\n"},
    {"pauses from the stamps, however late each was read", false, false, 1000, 0,
     {{Press, 1010, 65, {}, 30}, {Release, 1012, 65, {}, 3}}, "Pause(10);\nKeyDown(65);\nPause(2);\nKeyUp(65);\n"},
    {"stamps that wrap at 2^32", false, false, 4294967291, 0,
     {{Press, 4294967294u, 65}, {Release, 2, 65}}, "Pause(3);\nKeyDown(65);\nPause(4);\nKeyUp(65);\n"},
    {"a display with a clock of its own: the first pause as read", false, false, 1000, 76000,
     {{Press, 77000, 65, {}, 10}, {Release, 77003, 65, {}, 50}}, "Pause(10);\nKeyDown(65);\nPause(3);\nKeyUp(65);\n"},
    {"clicks where the change says, the cursor read later elsewhere", false, true, 1000, 0,
     {{Press, 1001, 1, {300, 300}}, {Release, 1001, 1, {300, 300}}, {Press, 1002, 2, {5, 6}}, {Release, 1003, 2, {5, 6}}},
     "Pause(1);\nLeftDownEx(300,300);\nPause(0);\nLeftUpEx(300,300);\nPause(1);\nRightDownEx(5,6);\nPause(1);\n"
     "RightUpEx(5,6);\n"},
    {"Ctrl+6 and Ctrl+7 flip the settings for what follows", true, true, 1000, 0,
     {{Press, 1010, 162}, {Press, 1011, 54}, {Release, 1011, 54}, {Release, 1012, 162},
      {Press, 1020, 162}, {Press, 1021, 55}, {Release, 1021, 55}, {Release, 1022, 162},
      {Move, 1030, 0, {40, 50}}, {Press, 1031, 1, {40, 50}}, {Release, 1031, 1, {40, 50}}},
     "Pause(10);\nPause(10);\nPause(11);\nLeftDown();\nPause(0);\nLeftUp();\n"},
};

TEST(Recorder, KeyStateChangesWriteOneTickEach) {
    for (const ChangeCase& c : kChangeCases) {
        SCOPED_TRACE(c.name);
        platform::fake::FakePlatform fake;
        fake.input.setCursorPos(900, 700);  // where a late read of the cursor would find it
        TestClock clock;
        clock.now = c.start;
        RecorderState state;
        state.mouseMoves = c.mouseMove;
        state.extendedClicks = c.extendedClicks;
        FormState form;
        Recorder recorder(state, form, Form::Basic, fake.keyboard, fake.input, clock, {});
        int polls = 0;
        ASSERT_TRUE(recorder.start([&polls] { ++polls; }));
        int64_t lastStamp = c.start;
        for (const Step& step : c.steps) {
            lastStamp += static_cast<int32_t>(step.stamp - static_cast<uint32_t>(lastStamp + c.skew));
            clock.now = std::max(clock.now, lastStamp + step.late);
            if (step.what == Move)
                fake.keyboard.moved(step.stamp, step.at);
            else
                fake.keyboard.change(static_cast<uint8_t>(step.vk), step.what == Press, step.stamp,
                                     step.vk <= 4 ? std::optional(step.at) : std::nullopt);
        }
        EXPECT_EQ(state.script, c.expected);
        EXPECT_EQ(polls, static_cast<int>(c.steps.size()));
        // The close counts on the local clock from the last change's stamp.
        clock.now += 7;
        const std::string script = recorder.close();
        if (c.skew == 0) {
            EXPECT_NE(script.find("Pause(" + std::to_string(clock.now - lastStamp) + ");\n\nEndFunction();"),
                      std::string::npos)
                << script;
        }
        EXPECT_TRUE(engine::checkScript(script).empty()) << script;
        // After the close no change is taken.
        fake.keyboard.change(90, true, 5000);
        EXPECT_EQ(state.script, script);
    }
}
}  // namespace
}  // namespace tarvoke::recorder
