// Playback as the windows drive it: the play timer's tick, repeat, Play X,
// Stop from inside a run, a Play that replaces a run, and resume; the hotkey
// poll; Correct Time's scan, calibration and timed runs on a clock the test
// moves; the bytes of a compiled program. The recorder, ticked by hand and
// driven by the key state's changes.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "engine/check.h"
#include "engine/sc.h"
#include "engine/scripttext.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/dryrun/dryrun.h"
#include "platform/fake/fakeplatform.h"
#include "playback/compiledscript.h"
#include "playback/correcttime.h"
#include "playback/hotkeys.h"
#include "playback/playback.h"
#include "recorder/recorder.h"
#include "recorder/recording.h"
#include "recorder/sampler.h"
#include "recorder/windowselection.h"

namespace tarvoke::test {
namespace {

// Input that writes "ReleaseAll" into the transcript when it lets go of
// everything.
struct ReleasingInput : platform::dryrun::DryRunInput {
    using DryRunInput::DryRunInput;
    std::function<void()> onRelease;
    void releaseAll() override { onRelease(); }
};

// The fixture is the windows' view and the clock: its yields and waits run
// what the test puts in onYield, as the event loop runs timers and hotkeys.
class PlaybackTest : public ::testing::Test, public playback::PlaybackView, public platform::Clock {
protected:
    PlaybackTest() {
        input.onRelease = [this] { transcript.emplace_back("ReleaseAll"); };
        session.platform = roles.platform();
        session.platform.input = &input;
        session.platform.clock = this;
        playback.setView(this);
    }
    void hideForRun() override { shown = false; }
    void showAfterRun() override { shown = true; }
    void setPlayTimer(bool on) override { timer = on; }
    void afterStop() override {}
    bool playXSelected() const override { return playX; }
    void yield() override {
        if (onYield) onYield();
    }
    void wait(int32_t) override { yield(); }
    void cancelWaits() override { ++cancels; }
    int64_t monotonicMs() override { return 0; }

    void start(std::string text, bool clearTarget = true) {
        script = std::move(text);
        playback.start(script, clearTarget);
    }
    // Ticks while the timer is on, as the event loop would, up to a bound.
    int tickWhileOn(int bound = 20) {
        int ticks = 0;
        for (; timer && ticks < bound; ++ticks) playback.tick();
        return ticks;
    }
    int linesStartingWith(const std::string& prefix) const {
        return static_cast<int>(std::count_if(transcript.begin(), transcript.end(),
                                              [&](const std::string& l) { return l.starts_with(prefix); }));
    }

    bool shown = true, timer = false, playX = false;
    int cancels = 0;
    std::function<void()> onYield;
    std::vector<std::string> transcript;
    platform::dryrun::LineSink sink = [this](std::string_view line) { transcript.emplace_back(line); };
    platform::dryrun::DryRunPlatform roles{sink, [] {}};
    ReleasingInput input{sink};
    host::Session session;
    host::HostCommands commands{session};
    engine::SC engine{commands};
    playback::Playback playback{engine, session};
    std::string script;
};

const std::string kOneMessage = "Function(Main);\nMessage(run, normal, t);\nEndFunction();";

// A play hides the windows and turns the timer on; nothing runs before the
// first tick. Play forgets the target window, playing a selection keeps it.
// The timer fires inside the run too, and a tick never nests.
TEST_F(PlaybackTest, RunCountsFollowRepeatAndPlayX) {
    onYield = [&] { playback.tick(); };
    // What each case checks, repeat, Play X and its target, the runs (-1:
    // still running after the bound), whether the play clears the target.
    const std::tuple<const char*, bool, bool, int, int, bool> cases[] = {
        {"once", false, false, 0, 1, true},        {"repeat runs on", true, false, 0, -1, true},
        {"play X three", true, true, 3, 3, true},  {"play X zero runs once", true, true, 0, 1, true},
        {"play X one, a selection", true, true, 1, 1, false},
    };
    for (const auto& [name, repeat, x, target, runs, clearTarget] : cases) {
        SCOPED_TRACE(name);
        transcript.clear();
        session.repeat = repeat;
        session.targetWindow = 42;
        playX = x;
        if (x) playback.setPlayTarget(target);
        start(kOneMessage, clearTarget);
        EXPECT_FALSE(shown);
        EXPECT_TRUE(timer);
        EXPECT_EQ(session.targetWindow, clearTarget ? 0u : 42u);
        EXPECT_TRUE(transcript.empty());
        const int ticks = tickWhileOn(20);
        EXPECT_EQ(linesStartingWith("MessageBox"), runs < 0 ? 20 : runs);
        EXPECT_EQ(timer, runs < 0);
        EXPECT_EQ(shown, runs >= 0);
        EXPECT_EQ(ticks, runs < 0 ? 20 : runs);
        EXPECT_FALSE(playback.inTick());
        playback.stopPlay();
    }
}

// Stop ends the run in its pause, and a stopped play lets go of what its run
// held once no statement of the run can press again; a repeat keeps keys
// held from one run to the next.
TEST_F(PlaybackTest, AStoppedPlayLetsGoOfTheKeysAfterItsLastStatement) {
    // What each case checks, repeat, the yield to stop at (0: the play ends by
    // itself, or runs to the bound), the script.
    const char* held = "Function(Main);\nKeyDown(16);\nPause(60000);\nKeyDown(17);\nEndFunction();";
    const std::tuple<const char*, bool, int, const char*> cases[] = {
        {"stop between statements", true, 3, held}, {"stop in the pause", true, 4, held},
        {"the end of a single run", false, 0, held},
        {"a repeat holds on between runs", true, 0, "Function(Main);\nKeyDown(16);\nEndFunction();"},
    };
    for (const auto& [name, repeat, stopAtYield, script] : cases) {
        SCOPED_TRACE(name);
        transcript.clear();
        session.repeat = repeat;
        start(script);
        int yields = 0;
        cancels = 0;
        onYield = [&] {
            if (++yields == stopAtYield) playback.stopPlay();
        };
        tickWhileOn(5);
        onYield = nullptr;
        if (stopAtYield) {
            EXPECT_FALSE(timer);
        }
        EXPECT_EQ(std::count(transcript.begin(), transcript.end(), "keybd_event 17 0"), stopAtYield ? 0 : !repeat);
        EXPECT_EQ(std::count(transcript.begin(), transcript.end(), "ReleaseAll"), repeat && !stopAtYield ? 0 : 1);
        EXPECT_EQ(transcript.front(), "keybd_event 16 0") << "nothing let go before the run";
        playback.stopPlay();
        EXPECT_FALSE(timer);
        EXPECT_TRUE(shown);
        EXPECT_EQ(transcript.back(), "ReleaseAll");
        if (stopAtYield) {
            EXPECT_GE(cancels, 1) << "the pause is cut short";
        }
    }
}

TEST_F(PlaybackTest, PlayDuringARunReplacesIt) {
    session.repeat = false;
    start("Function(Main);\nMessage(old, normal, t);\nPause(60000);\nMessage(old again, normal, t);\nEndFunction();");
    bool replaced = false;
    std::string second = "Function(Main);\nMessage(new, normal, t);\nEndFunction();";
    onYield = [&] {
        if (replaced || transcript.empty()) return;
        replaced = true;
        playback.stopPlay();  // the Play handler stops first, then starts
        playback.start(second, true);
    };
    playback.tick();
    // The old run's end did not stop the new one.
    EXPECT_TRUE(timer);
    EXPECT_FALSE(shown);
    onYield = nullptr;
    playback.tick();
    // The old run lets go of its keys before the new one starts.
    EXPECT_EQ(transcript, (std::vector<std::string>{"MessageBox 0 \"t\" \"old\"", "ReleaseAll",
                                                    "MessageBox 0 \"t\" \"new\"", "ReleaseAll"}));
    EXPECT_FALSE(timer);
    EXPECT_TRUE(shown);
}

TEST_F(PlaybackTest, PauseScriptMakesTheNextPlayResume) {
    session.repeat = true;
    start(kOneMessage);
    playback.pauseScript();
    EXPECT_FALSE(timer);
    EXPECT_TRUE(playback.resumePending());
    shown = true;
    EXPECT_TRUE(playback.resumeIfPending());
    EXPECT_TRUE(timer);
    EXPECT_TRUE(shown);  // a resume does not hide
    EXPECT_FALSE(playback.resumeIfPending());
}


// The hotkey poll: which of Ctrl+0/1/8/9 fire in one tick, and how the
// "pressed since the last read" bit makes a held key fire once.

// Keys down now, and keys whose press bit is set; a read of the bit clears it.
struct HeldKeys : platform::KeyState {
    void press(std::initializer_list<uint8_t> vks) {
        down.insert(vks);
        pressed.insert(vks);
    }
    bool isDown(uint8_t vk) override { return down.count(vk) != 0; }
    bool pressedSinceLastRead(uint8_t vk) override { return pressed.erase(vk) != 0; }
    std::set<uint8_t> down, pressed;
};

using H = std::vector<playback::Hotkey>;
using playback::Hotkey, playback::HotkeyConditions, playback::pollHotkeys;
using enum Hotkey;

TEST(HotkeyPoll, FiresTheHotkeysOfTheTable) {
    struct Case {
        const char* name;
        std::initializer_list<uint8_t> pressed;   // pressed and still down
        std::initializer_list<uint8_t> released;  // pressed and let go before the tick
        HotkeyConditions conditions;
        H expected;
    } const cases[] = {
        {"Ctrl+0 stops", {17, 48}, {}, {}, {Stop}},
        {"0 without Ctrl does nothing", {48}, {}, {}, {}},
        {"numpad 0 is not 0", {17, 96}, {}, {}, {}},
        {"a tap between ticks does not count", {17}, {48}, {}, {}},
        {"a stop seen in a step stops once the keys are up", {}, {17, 48}, {.stopSeen = true}, {Stop}},
        {"a stop seen in a step fires once", {17, 48}, {}, {.stopSeen = true}, {Stop}},
        {"Ctrl+1 only in Correct Time", {17, 49}, {}, {}, {}},
        {"Ctrl+1 pauses Correct Time", {17, 49}, {}, {.correctTimeRunning = true}, {Pause}},
        {"record and play", {17, 56, 57}, {}, {}, {Record, Play}},
        {"record and play blocked while recording", {17, 56, 57}, {}, {.recording = true}, {}},
        {"stop still works while recording", {17, 48}, {}, {.recording = true}, {Stop}},
        {"all in the table's order", {17, 57, 56, 49, 48}, {}, {.correctTimeRunning = true}, {Stop, Pause, Record, Play}},
    };
    for (const Case& c : cases) {
        HeldKeys keys;
        keys.press(c.pressed);
        keys.pressed.insert(c.released);
        EXPECT_EQ(pollHotkeys(keys, c.conditions), c.expected) << c.name;
    }
}

TEST(HotkeyPoll, APressCountsOnceAndOnlyWhenItsHotkeyIsRead) {
    HeldKeys held;  // a held key fires once
    held.press({17, 48});
    EXPECT_EQ(pollHotkeys(held), H{Stop});
    EXPECT_TRUE(pollHotkeys(held).empty());
    held.press({48});
    EXPECT_EQ(pollHotkeys(held), H{Stop});

    // Ctrl+9 pressed during a recording must not start a play once the
    // recording ends while the key is still held.
    HeldKeys blocked;
    blocked.press({17, 57});
    EXPECT_TRUE(pollHotkeys(blocked, {.recording = true}).empty());
    EXPECT_TRUE(pollHotkeys(blocked).empty());

    // The digit's press bit survives ticks without Control.
    HeldKeys late;
    late.press({48});
    EXPECT_TRUE(pollHotkeys(late).empty());
    late.down.insert(17);
    EXPECT_EQ(pollHotkeys(late), H{Stop});
}

TEST(CorrectTime, ScanCalibrationAndReplace) {
    const std::pair<const char*, double> scans[] = {
        {"origionalplaytime(5.0);\r\norigionalplaytime(5.5);", 10.5},  // recordings joined add up
        {"origionalplaytime (3);origionalplaytime(\n4);", 4},          // a blank hides; line ends do not
        {"origionalplaytime(x);origionalplaytime();origionalplaytime(2)", 0},  // no number; no ";" after
        {"message(\"a;origionalplaytime(7);b\");", 7},                  // every ";" ends a statement
    };
    for (const auto& [text, sum] : scans) EXPECT_DOUBLE_EQ(playback::origionalPlayTime(text), sum) << text;

    // Seconds, milliseconds, recorded; measured and the new percentage.
    const double calibrations[][5] = {{21, 0, 10.5, 21, 200},   {12, 45, 12.45, 12.45, 100},  // 45 ms read .45
                                      {3, 1234, 6.1234, 3.1234, 3.1234 / 6.1234 * 100},     // a late tick
                                      {0, 0, 10.5, 0, 0},       {7, 5, 0, 7.5, 100}};      // nothing recorded
    for (const auto& row : calibrations) {
        const double measured = playback::measuredTime(int32_t(row[0]), int32_t(row[1]));
        EXPECT_DOUBLE_EQ(measured, row[3]);
        EXPECT_DOUBLE_EQ(playback::newPausePercent(measured, row[2]), row[4]);
    }

    const std::tuple<const char*, const char*, double, const char*> replaces[] = {
        {"a;\nsetpausepercent(100);SETPAUSEPERCENT(100);", "100", 200, "a;\nSetPausePercent(200);SetPausePercent(200);"},
        {"SetPausePercent(50);", "100", 12.5, "SetPausePercent(50);"},
    };
    for (const auto& [text, old, percent, result] : replaces)
        EXPECT_EQ(playback::replacePausePercent(text, old, percent), result);
}

// Waits pass at once and move time on; the seconds timer ticks as its
// seconds go by, as the event loop would run it.
class TimedRunTest : public PlaybackTest {
protected:
    int64_t monotonicMs() override { return now; }
    void wait(int32_t ms) override {
        for (int32_t i = 0; i < ms; ++i)
            if (++now - lastSecond == 1000) lastSecond = now, run.secondTick();
        if (onWait) onWait();
    }

    std::string timedRun(std::string text, engine::ExecuteType type) {
        lastSecond = now;
        run.begin(text);
        std::string loaded = text;  // the load normalises it
        run.run(loaded, type);
        return run.rewrite(text, run.finish());
    }

    int64_t now = 5000, lastSecond = 0;
    std::function<void()> onWait;
    playback::TimedRun run{engine, playback, session};
};

TEST_F(TimedRunTest, RewritesThePercentTheRunCarriedOut) {
    std::vector<int32_t> lines;
    run.countStatements([&](int32_t count) { lines.push_back(count); });
    const std::string head = "Function(Main);\nORIGIONALPLAYTIME(10.5);\nsetpausepercent(70);\n";
    // The pause, the type, the rewritten statement, the statements counted.
    const std::tuple<const char*, engine::ExecuteType, const char*, size_t> rows[] = {
        {"Pause(21000);", engine::ExecuteType::CorrectTime, "SetPausePercent(200);", 0},
        {"Pause(5250);", engine::ExecuteType::WhiteDebug, "SetPausePercent(50);", 5},  // .250 reads .25
        {"", engine::ExecuteType::CorrectTime, "SetPausePercent(0);", 0},
    };
    for (const auto& [pause, type, rewritten, counted] : rows) {
        lines.clear();
        EXPECT_EQ(timedRun(head + pause + "\nEndFunction();", type), head.substr(0, 41) + rewritten + "\n" + pause +
                                                                         "\nEndFunction();");
        EXPECT_DOUBLE_EQ(session.pauseFactor, 1.0);  // the script's percent is noted, not carried out
        // Function(Main) and three statements, and SetPausePercent once more.
        EXPECT_EQ(lines.size(), counted);
    }
    // Ctrl+1 ends the run after the pause in hand; it calibrates on that.
    onWait = [this] { playback.pauseScript(); };
    EXPECT_NE(timedRun(head + "Pause(5250);Pause(9000);EndFunction();", engine::ExecuteType::CorrectTime)
                  .find("SetPausePercent(50);"),
              std::string::npos);
    EXPECT_TRUE(playback.resumePending());
}


TEST(CompiledScript, CompactBodyAndItsLoad) {
    const std::tuple<const char*, const char*, const char*> cases[] = {  // the text, its compact body, its load
        {"Function(Main);\r\n  MsgBox(\"Hi There; You\");\nEndFunction();", "function(main);msgbox(Hi There; You);endfunction();",
         "function(main);msgbox(Hi There; You);endfunction();"},
        {"A\tB #Note Here# C", "a\tb#notehere#c", "abc"},
        {"", "", ""},
    };
    for (const auto& [text, body, loaded] : cases) {
        EXPECT_EQ(playback::compactScript(text), body) << text;
        // The runtime's load folds nothing a second time.
        EXPECT_EQ(engine::stripSource(body, engine::SourceForm::Compact), loaded) << text;
    }
    EXPECT_EQ(playback::bodyAsLines("a(1);msgbox(x;y);"), "a(1);\nmsgbox(x;\ny);\n");
}

// The bytes of both kinds of program: the widget test of Compile and Open.
TEST(CompiledScript, TheTailReadBack) {
    const auto tail = playback::compiledTailOf(playback::compiledProgram("RUNTIMEZ", true, "a();"));
    ASSERT_TRUE(tail);
    EXPECT_EQ(tail->flag, '1');
    EXPECT_EQ(tail->body, "a();");
    EXPECT_EQ(playback::compiledProgram(std::string(300, 'x'), false, "").substr(300), std::string("\x2c\x01\x00\x00", 4));
    // A tail out of range is no script.
    const std::string corrupt[] = {"", "abc", std::string("\0\0\0\0", 4), std::string("xy\x03\x00\x00\x00", 6),
                                   std::string("xy\xff\xff\xff\xff", 6), "plain script text;"};
    for (const std::string& file : corrupt) EXPECT_FALSE(playback::compiledTailOf(file)) << file.size();
    EXPECT_TRUE(playback::compiledTailOf(std::string("xy\x02\x00\x00\x00", 6)));  // an empty body
}

// The recorder, on the keys the hotkey poll reads.
using namespace recorder;

// The sampler ticked by hand every 10 ms, over a set of virtual keys down;
// the recorder's clock, which reads the time the test sets.
struct Rig : platform::Clock {
    Rig() {
        clocks.startEventClock = [this] { eventStart = now; };
        clocks.readEventClock = [this] { return static_cast<int32_t>(now - eventStart); };
        clocks.startRunClock = [this] { runStart = now; };
        clocks.readRunClock = [this] { return static_cast<int32_t>(now - runStart); };
        hooks.windowSelection = [] { return std::string("SelectWindow(\"c\", \"t\");\n"); };
        hooks.captureTemp = [this] { ++captures; };
        hooks.tempPixel = [](platform::Point) { return 0x00FF8040u; };  // red 255, green 128, blue 64
    }
    void start(const std::set<uint8_t>& held, bool mouseMoves) {
        keys.down = held;
        state.mouseMoves = mouseMoves;
        startRecording(state, form, keys, fake.input, clocks);
    }
    void tick(const std::set<uint8_t>& down, platform::Point at = {}, Form kind = Form::Main) {
        now += 10;
        keys.down = down;
        fake.input.setCursorPos(at.x, at.y);
        Sampler(state, form, kind, keys, fake.input, clocks, hooks).tick();
    }
    void yield() override {}
    void wait(int32_t) override {}
    void cancelWaits() override {}
    int64_t monotonicMs() override { return now; }

    platform::fake::FakePlatform fake;
    RecorderState state;
    FormState form;
    HeldKeys keys;
    Stopwatches clocks;
    SamplerHooks hooks;
    int64_t now = 1000, eventStart = 0, runStart = 0;
    int captures = 0;
};

// Ctrl as a user holds it: the generic 17 and the left 162.
const std::set<uint8_t> C = {17, 162};
std::set<uint8_t> with(std::set<uint8_t> keys, std::initializer_list<uint8_t> more) {
    keys.insert(more);
    return keys;
}

struct Tick {
    std::set<uint8_t> down;
    platform::Point at{};
};
struct SamplerCase {
    const char* name;
    std::vector<Tick> ticks;
    std::string expected;
    std::set<uint8_t> held = {};  // down at the start
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

TEST(Recorder, TheCloseFramesTheLinesWithThePlayTimeAndALastPause) {
    Rig rig;
    rig.start({}, false);
    rig.now += 1005;
    countSecond(rig.state, rig.clocks);
    rig.now += 7;
    EXPECT_EQ(closeRecording(rig.state, rig.clocks),
              "Function(Main);\nOrigionalPlayTime(1.7);\nSetPausePercent(100);\n\nPause(1012);\n\nEndFunction();");
    // Ctrl and 0 first seen in one tick: the 0 ends the tick before Ctrl is read, and the close takes out Ctrl.
    rig.start({}, false);
    rig.tick({65});
    rig.tick(with(C, {48, 65}));
    rig.tick(with(C, {65}));
    rig.now += 7;
    rig.state.seconds = 5;
    EXPECT_EQ(closeRecording(rig.state, rig.clocks),
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
        Rig rig;
        rig.fake.input.setCursorPos(900, 700);  // where a late read of the cursor would find it
        rig.now = c.start;
        rig.state.mouseMoves = c.mouseMove;
        rig.state.extendedClicks = c.extendedClicks;
        Recorder recorder(rig.state, rig.form, Form::Basic, rig.fake.keyboard, rig.fake.input, rig, {});
        int polls = 0;
        ASSERT_TRUE(recorder.start([&polls] { ++polls; }));
        int64_t lastStamp = c.start;
        for (const Step& step : c.steps) {
            lastStamp += static_cast<int32_t>(step.stamp - static_cast<uint32_t>(lastStamp + c.skew));
            rig.now = std::max(rig.now, lastStamp + step.late);
            if (step.what == Move)
                rig.fake.keyboard.moved(step.stamp, step.at);
            else
                rig.fake.keyboard.change(static_cast<uint8_t>(step.vk), step.what == Press, step.stamp,
                                         step.vk <= 4 ? std::optional(step.at) : std::nullopt);
        }
        EXPECT_EQ(rig.state.script, c.expected);
        EXPECT_EQ(polls, static_cast<int>(c.steps.size()));
        // The close counts on the local clock from the last change's stamp.
        rig.now += 7;
        const std::string script = recorder.close();
        if (c.skew == 0) {
            EXPECT_NE(script.find("Pause(" + std::to_string(rig.now - lastStamp) + ");\n\nEndFunction();"),
                      std::string::npos)
                << script;
        }
        EXPECT_TRUE(engine::checkScript(script).empty()) << script;
        // After the close no change is taken.
        rig.fake.keyboard.change(90, true, 5000);
        EXPECT_EQ(rig.state.script, script);
    }
}
}  // namespace
}  // namespace tarvoke::test
