// Playback as the windows drive it: the play timer's tick, repeat, Play X,
// Stop from inside a run, a Play that replaces a run, and resume; the hotkey
// poll; Correct Time's scan, calibration and timed runs on a clock the test
// moves; the bytes of a compiled program.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "engine/sc.h"
#include "engine/scripttext.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/dryrun/dryrun.h"
#include "playback/compiledscript.h"
#include "playback/correcttime.h"
#include "playback/hotkeys.h"
#include "playback/playback.h"

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

TEST(HotkeyPoll, FiresTheHotkeysOfTheTable) {
    struct Case {
        const char* name;
        std::initializer_list<uint8_t> pressed;   // pressed and still down
        std::initializer_list<uint8_t> released;  // pressed and let go before the tick
        HotkeyConditions conditions;
        H expected;
    } const cases[] = {
        {"Ctrl+0 stops", {17, 48}, {}, {}, {Hotkey::Stop}},
        {"0 without Ctrl does nothing", {48}, {}, {}, {}},
        {"numpad 0 is not 0", {17, 96}, {}, {}, {}},
        {"a tap between ticks does not count", {17}, {48}, {}, {}},
        {"a stop seen in a step stops once the keys are up", {}, {17, 48}, {.stopSeen = true}, {Hotkey::Stop}},
        {"a stop seen in a step fires once", {17, 48}, {}, {.stopSeen = true}, {Hotkey::Stop}},
        {"Ctrl+1 only in Correct Time", {17, 49}, {}, {}, {}},
        {"Ctrl+1 pauses Correct Time", {17, 49}, {}, {.correctTimeRunning = true}, {Hotkey::Pause}},
        {"record and play", {17, 56, 57}, {}, {}, {Hotkey::Record, Hotkey::Play}},
        {"record and play blocked while recording", {17, 56, 57}, {}, {.recording = true}, {}},
        {"stop still works while recording", {17, 48}, {}, {.recording = true}, {Hotkey::Stop}},
        {"all in the table's order", {17, 57, 56, 49, 48}, {}, {.correctTimeRunning = true},
         {Hotkey::Stop, Hotkey::Pause, Hotkey::Record, Hotkey::Play}},
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
    EXPECT_EQ(pollHotkeys(held), H{Hotkey::Stop});
    EXPECT_TRUE(pollHotkeys(held).empty());
    held.press({48});
    EXPECT_EQ(pollHotkeys(held), H{Hotkey::Stop});

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
    EXPECT_EQ(pollHotkeys(late), H{Hotkey::Stop});
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
}  // namespace
}  // namespace tarvoke::test
