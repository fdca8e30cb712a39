#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>

#include "platform/fake/fakekeyboard.h"
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

struct FakeCursor : platform::Input {
    platform::Point cursor;
    void setCursorPos(int32_t x, int32_t y) override { cursor = {x, y}; }
    platform::Point cursorPos() override { return cursor; }
    void mouseEvent(uint32_t) override {}
    void keyEvent(uint8_t, uint32_t) override {}
    void sendKeys(const std::string&, const std::vector<platform::KeyStroke>&) override {}
    void sendMessage(platform::WindowId, uint32_t, uint32_t, uint32_t) override {}
};

// Keys as a user holds them: Ctrl is the generic 17 and the left 162.
const std::set<int> kCtrl = {17, 162};
std::set<int> with(std::set<int> keys, std::initializer_list<int> more) {
    keys.insert(more);
    return keys;
}

class SamplerTest : public ::testing::Test {
protected:
    SamplerTest() {
        clocks.startEventClock = [this] { eventStart = now; };
        clocks.readEventClock = [this] { return static_cast<int32_t>(now - eventStart); };
        clocks.startRunClock = [this] { runStart = now; };
        clocks.readRunClock = [this] { return static_cast<int32_t>(now - runStart); };
        hooks.windowSelection = [] { return std::string("SelectWindow(\"c\", \"t\");\n"); };
        hooks.captureTemp = [this] { ++captures; };
        hooks.tempPixel = [](platform::Point) { return 0x00FF8040u; };  // red 255, green 128, blue 64
    }

    Sampler sampler(Form kind = Form::Main) { return Sampler(state, form, kind, keys, cursor, clocks, hooks); }
    void start(bool mouseMove = false, bool extendedClicks = false) {
        state.mouseMoves = mouseMove;
        state.extendedClicks = extendedClicks;
        startRecording(state, form, keys, cursor, clocks);
    }
    // One tick 10 ms after the last, with these keys down.
    void tick(const std::set<int>& down, Form kind = Form::Main) {
        now += 10;
        keys.down = down;
        sampler(kind).tick();
    }

    RecorderState state;
    FormState form;
    FakeKeys keys;
    FakeCursor cursor;
    Stopwatches clocks;
    SamplerHooks hooks;
    int64_t now = 1000, eventStart = 0, runStart = 0;
    int captures = 0;
};

TEST_F(SamplerTest, AKeyHeldFromBeforeTheStartGivesOnlyItsRelease) {
    keys.down = {65};
    start();
    tick({65});
    tick({});
    EXPECT_EQ(state.script, "Pause(20);\nKeyUp(65);\n");
}

TEST_F(SamplerTest, CtrlCIsFourKeyLines) {
    start();
    tick(kCtrl);
    tick(with(kCtrl, {67}));
    tick(kCtrl);
    tick({});
    EXPECT_EQ(state.script, "Pause(10);\nKeyDown(162);\nPause(10);\nKeyDown(67);\nPause(10);\nKeyUp(67);\n"
                                 "Pause(10);\nKeyUp(162);\n");
}

TEST_F(SamplerTest, ShiftIsWrittenAsTheGenericAndTheSidedKey) {
    start();
    tick({16, 160});
    tick({});
    EXPECT_EQ(state.script,
              "Pause(10);\nKeyDown(16);\nPause(0);\nKeyDown(160);\nPause(10);\nKeyUp(16);\nPause(0);\nKeyUp(160);\n");
}

TEST_F(SamplerTest, DigitsWithoutCtrlAndOtherDigitsWithCtrlAreKeys) {
    start();
    tick({48});
    tick({});
    tick(with(kCtrl, {49}));
    tick({});
    EXPECT_EQ(state.script, "Pause(10);\nKeyDown(48);\nPause(10);\nKeyUp(48);\nPause(10);\nKeyDown(49);\n"
                                 "Pause(0);\nKeyDown(162);\nPause(10);\nKeyUp(49);\nPause(0);\nKeyUp(162);\n");
}

TEST_F(SamplerTest, CtrlFourWritesTheWindowLinesAndNothingOfTheKeys) {
    start();
    tick(kCtrl);
    tick(with(kCtrl, {52}));
    tick(with(kCtrl, {52}));
    tick(kCtrl);
    tick({});
    tick({65});
    EXPECT_EQ(state.script, "Pause(10);\nPause(10);\nSelectWindow(\"c\", \"t\");\n\nPause(40);\nKeyDown(65);\n");
}

TEST_F(SamplerTest, CtrlFiveSamplesTheColourOnEveryPress) {
    start();
    for (int press = 0; press < 2; ++press) {
        tick(kCtrl);
        tick(with(kCtrl, {53}));
        tick({});
    }
    const auto block = [](int pause) {
        return "Pause(" + std::to_string(pause) + ");\nCaptureScreen(imagesave0);\n"
               "Pause(0);\nCreateColorRange(colorrange0, 255, 64, 128, 255, 64, 128);\n"
               "Pause(0);\nMoveMouseToColorRange(imagesave0, colorrange0);\n";
    };
    EXPECT_EQ(captures, 2);
    // Each Ctrl press is taken out, its Pause stays; each release is swallowed.
    EXPECT_EQ(state.script, "Pause(10);\n" + block(10) + "Pause(20);\n" + block(10));
}

TEST_F(SamplerTest, CtrlSixInvertsMouseMovesOnceHoweverLongHeld) {
    start(true);
    tick(kCtrl);
    for (int i = 0; i < 5; ++i) tick(with(kCtrl, {54}));
    tick(kCtrl);
    tick({});
    EXPECT_FALSE(state.mouseMoves);
    EXPECT_EQ(state.script, "Pause(10);\n");
}

TEST_F(SamplerTest, OnlyDiagonalMovesAreWritten) {
    start(true);
    cursor.cursor = {10, 0};
    tick({});
    cursor.cursor = {20, 5};
    tick({});
    cursor.cursor = {30, 5};
    tick({});
    EXPECT_EQ(state.script, "Pause(20);\nMoveMouse(20,5);\n");
}

TEST_F(SamplerTest, ClicksWithAndWithoutPositions) {
    start(false, false);
    tick({1});
    tick({});
    state.extendedClicks = true;
    cursor.cursor = {7, 9};
    tick({2});
    tick({});
    EXPECT_EQ(state.script,
              "Pause(10);\nLeftDown();\nPause(10);\nLeftUp();\nPause(10);\nRightDownEx(7,9);\nPause(10);\nRightUpEx(7,9);\n");
}

TEST_F(SamplerTest, AHotkeyStartDropsTwoLinesInTheMainWindowOnly) {
    for (Form kind : {Form::Main, Form::Basic}) {
        keys.down = {};
        start();
        state.startedByHotkey = true;
        tick({56}, kind);
        tick({}, kind);
        tick({65}, kind);
        EXPECT_EQ(state.script, kind == Form::Main ? "Pause(30);\nKeyDown(65);\n"
                                                        : "Pause(10);\nKeyDown(56);\nPause(10);\nKeyUp(56);\nPause(10);\nKeyDown(65);\n");
    }
}

TEST_F(SamplerTest, TheStopHotkeyLeavesNoTrace) {
    start();
    tick({65});
    tick(with(kCtrl, {48, 65}));  // Ctrl and 0 first seen in one tick: the 0 ends the tick before Ctrl is read
    tick(with(kCtrl, {65}));
    now += 7;
    state.seconds = 5;
    EXPECT_EQ(closeRecording(state, clocks),
              "Function(Main);\nOrigionalPlayTime(5.37);\nSetPausePercent(100);\n\n"
              "Pause(10);\nKeyDown(65);\nPause(20);\nPause(7);\n\nEndFunction();");
}

TEST_F(SamplerTest, AnEmptyRecordingIsTheFrameAroundOnePause) {
    start();
    now += 1005;
    countSecond(state, clocks);
    now += 7;
    EXPECT_EQ(closeRecording(state, clocks),
              "Function(Main);\nOrigionalPlayTime(1.7);\nSetPausePercent(100);\n\nPause(1012);\n\nEndFunction();");
}

TEST(removeLastCtrlDown, PrefersTheRightCtrlThenTheLeft) {
    std::string text = "KeyDown(162);\nKeyDown(163);\nKeyDown(162);\n";
    removeLastCtrlDown(text);
    EXPECT_EQ(text, "KeyDown(162);\nKeyDown(162);\n");
    removeLastCtrlDown(text);
    EXPECT_EQ(text, "KeyDown(162);\n");
    std::string none = "KeyUp(162);\n";
    removeLastCtrlDown(none);
    EXPECT_EQ(none, "KeyUp(162);\n");
}

struct FakeWindows : platform::Windows {
    struct Window {
        platform::WindowId parent;
        std::string windowClass, title;
    };
    std::map<platform::WindowId, Window> windows;
    platform::WindowId under = 0;
    platform::WindowId findWindow(const std::optional<std::string>&, const std::optional<std::string>&) override { return 0; }
    platform::WindowId findWindowEx(platform::WindowId, platform::WindowId, const std::optional<std::string>&,
                                    const std::optional<std::string>&) override { return 0; }
    platform::WindowId windowFromPoint(platform::Point) override { return under; }
    platform::WindowId parent(platform::WindowId w) override { return windows[w].parent; }
    std::string className(platform::WindowId w) override { return windows[w].windowClass; }
    std::string title(platform::WindowId w) override { return windows[w].title; }
};

TEST(WindowSelection, TopLevelThenChildrenOutermostFirst) {
    FakeWindows windows;
    FakeCursor cursor;
    windows.windows = {{1, {0, "dialog", "Save; now"}}, {2, {1, "panel", "p"}}, {3, {2, "button", "OK"}}};
    windows.under = 3;
    EXPECT_EQ(windowSelection(windows, cursor),
              "SelectWindow(\"dialog\", \"Save; now\");\nSelectSubWindow(\"panel\");\nSelectSubWindow(\"button\");\n");
    windows.under = 1;
    windows.windows[1].title = "";
    EXPECT_EQ(windowSelection(windows, cursor), "SelectWindow(\"dialog\", \"\");\n");
}

TEST(WindowSelection, TextsAreCutAt99BytesOnACharacterBoundary) {
    EXPECT_EQ(cutWindowText(std::string(120, 'a')).size(), 99u);
    std::string accented = std::string(98, 'a') + "\xc3\xa9";  // the é would straddle the cut
    EXPECT_EQ(cutWindowText(accented), std::string(98, 'a'));
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
     {{Step::Move, 1010, 0, {300, 300}}, {Step::Press, 1020, 1, {300, 300}}, {Step::Release, 1020, 1, {300, 300}}},
     "Pause(10);\nMoveMouse(300,300);\nPause(10);\nLeftDownEx(300,300);\nPause(0);\nLeftUpEx(300,300);\n"},
    {"keys typed within one millisecond", false, false, 1000, 0,
     {{Step::Press, 1005, 65}, {Step::Release, 1005, 65}, {Step::Press, 1005, 66}, {Step::Release, 1006, 66}},
     "Pause(5);\nKeyDown(65);\nPause(0);\nKeyUp(65);\nPause(0);\nKeyDown(66);\nPause(1);\nKeyUp(66);\n"},
    {"pauses from the stamps, however late each was read", false, false, 1000, 0,
     {{Step::Press, 1010, 65, {}, 30}, {Step::Release, 1012, 65, {}, 3}},
     "Pause(10);\nKeyDown(65);\nPause(2);\nKeyUp(65);\n"},
    {"stamps that wrap at 2^32", false, false, 4294967291, 0,
     {{Step::Press, 4294967294u, 65}, {Step::Release, 2, 65}}, "Pause(3);\nKeyDown(65);\nPause(4);\nKeyUp(65);\n"},
    {"a display with a clock of its own: the first pause as read", false, false, 1000, 76000,
     {{Step::Press, 77000, 65, {}, 10}, {Step::Release, 77003, 65, {}, 50}},
     "Pause(10);\nKeyDown(65);\nPause(3);\nKeyUp(65);\n"},
    {"clicks where the change says, the cursor read later elsewhere", false, true, 1000, 0,
     {{Step::Press, 1001, 1, {300, 300}}, {Step::Release, 1001, 1, {300, 300}}, {Step::Press, 1002, 2, {5, 6}},
      {Step::Release, 1003, 2, {5, 6}}},
     "Pause(1);\nLeftDownEx(300,300);\nPause(0);\nLeftUpEx(300,300);\nPause(1);\nRightDownEx(5,6);\nPause(1);\n"
     "RightUpEx(5,6);\n"},
    {"Ctrl+6 and Ctrl+7 flip the settings for what follows", true, true, 1000, 0,
     {{Step::Press, 1010, 162}, {Step::Press, 1011, 54}, {Step::Release, 1011, 54}, {Step::Release, 1012, 162},
      {Step::Press, 1020, 162}, {Step::Press, 1021, 55}, {Step::Release, 1021, 55}, {Step::Release, 1022, 162},
      {Step::Move, 1030, 0, {40, 50}}, {Step::Press, 1031, 1, {40, 50}}, {Step::Release, 1031, 1, {40, 50}}},
     "Pause(10);\nPause(10);\nPause(11);\nLeftDown();\nPause(0);\nLeftUp();\n"},
};

class ChangeTest : public ::testing::TestWithParam<ChangeCase> {};

TEST_P(ChangeTest, WritesOneTickPerChange) {
    const ChangeCase& c = GetParam();
    platform::fake::FakeKeyboard keyboard = platform::fake::FakeKeyboard::us();
    FakeCursor cursor;
    cursor.cursor = {900, 700};  // where a late read of the cursor would find it
    TestClock clock;
    clock.now = c.start;
    RecorderState state;
    state.mouseMoves = c.mouseMove;
    state.extendedClicks = c.extendedClicks;
    FormState form;
    form.lastMove = cursor.cursor;
    Recorder recorder(state, form, Form::Basic, keyboard, cursor, clock, {});
    int polls = 0;
    ASSERT_TRUE(recorder.start([&polls] { ++polls; }));
    form.lastMove = {900, 700};
    int64_t lastStamp = c.start;
    for (const Step& step : c.steps) {
        lastStamp += static_cast<int32_t>(step.stamp - static_cast<uint32_t>(lastStamp + c.skew));
        clock.now = std::max(clock.now, lastStamp + step.late);
        if (step.what == Step::Move)
            keyboard.moved(step.stamp, step.at);
        else
            keyboard.change(static_cast<uint8_t>(step.vk), step.what == Step::Press, step.stamp,
                            step.vk <= 4 ? std::optional(step.at) : std::nullopt);
    }
    EXPECT_EQ(state.script, c.expected);
    EXPECT_EQ(polls, static_cast<int>(c.steps.size()));
    // The close counts on the local clock from the last change's stamp.
    clock.now += 7;
    const std::string script = recorder.close();
    if (c.skew == 0) {
        const std::string last = "Pause(" + std::to_string(clock.now - lastStamp) + ");\n\nEndFunction();";
        EXPECT_NE(script.find(last), std::string::npos) << script;
    }
    // After the close no change is taken.
    keyboard.change(90, true, 5000);
    EXPECT_EQ(state.script, script);
}

INSTANTIATE_TEST_SUITE_P(Recorder, ChangeTest, ::testing::ValuesIn(kChangeCases),
                         [](const ::testing::TestParamInfo<ChangeCase>& info) {
                             std::string name;
                             for (const char* c = info.param.name; *c; ++c)
                                 if (std::isalnum(static_cast<unsigned char>(*c))) name += *c;
                             return name;
                         });

}  // namespace
}  // namespace tarvoke::recorder
