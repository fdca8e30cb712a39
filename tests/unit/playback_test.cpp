// Playback as the windows drive it: the play timer's tick, repeat, Play X,
// Stop from inside a run, a Play that replaces a run, and resume.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "engine/sc.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/dryrun/dryrun.h"
#include "playback/playback.h"

namespace tarvoke::test {
namespace {

// A clock whose yields and waits run what the test puts in onYield, as the
// event loop runs timers and hotkeys there.
class HandlerClock : public platform::Clock {
public:
    std::function<void()> onYield;
    int cancels = 0;
    void yield() override {
        if (onYield) onYield();
    }
    void wait(int32_t) override { yield(); }
    void cancelWaits() override { ++cancels; }
    int64_t monotonicMs() override { return 0; }
};

class FakeView : public playback::PlaybackView {
public:
    bool shown = true;
    bool timer = false;
    bool playX = false;
    int stops = 0;
    void hideForRun() override { shown = false; }
    void showAfterRun() override { shown = true; }
    void setPlayTimer(bool on) override { timer = on; }
    void afterStop() override { ++stops; }
    bool playXSelected() const override { return playX; }
};

// Input that writes "ReleaseAll" into the transcript when it lets go of
// everything.
class ReleasingInput : public platform::dryrun::DryRunInput {
public:
    using DryRunInput::DryRunInput;
    std::function<void()> onRelease;
    void releaseAll() override { onRelease(); }
};

class PlaybackTest : public ::testing::Test {
protected:
    PlaybackTest()
        : roles([this](std::string_view line) { transcript.emplace_back(line); }, [] {}),
          input([this](std::string_view line) { transcript.emplace_back(line); }), commands(session), engine(commands),
          playback(engine, session) {
        input.onRelease = [this] { transcript.emplace_back("ReleaseAll"); };
        session.platform = roles.platform();
        session.platform.input = &input;
        session.platform.clock = &clock;
        playback.setView(&view);
    }

    void start(std::string text, bool clearTarget = true) {
        script = std::move(text);
        playback.start(script, clearTarget);
    }
    // Ticks while the timer is on, as the event loop would, up to a bound.
    int tickWhileOn(int bound = 20) {
        int ticks = 0;
        while (view.timer && ticks < bound) {
            playback.tick();
            ++ticks;
        }
        return ticks;
    }
    int linesStartingWith(const std::string& prefix) const {
        return static_cast<int>(std::count_if(transcript.begin(), transcript.end(),
                                              [&](const std::string& l) { return l.starts_with(prefix); }));
    }

    std::vector<std::string> transcript;
    platform::dryrun::DryRunPlatform roles;
    ReleasingInput input;
    HandlerClock clock;
    host::Session session;
    host::HostCommands commands;
    engine::SC engine;
    playback::Playback playback;
    FakeView view;
    std::string script;
};

const std::string kOneMessage = "Function(Main);\nMessage(run, normal, t);\nEndFunction();";

TEST_F(PlaybackTest, StartLoadsHidesAndTurnsTheTimerOn) {
    session.targetWindow = 42;
    start(kOneMessage);
    EXPECT_FALSE(view.shown);
    EXPECT_TRUE(view.timer);
    EXPECT_EQ(session.targetWindow, 0u);
    EXPECT_TRUE(transcript.empty());  // nothing runs before the first tick
}

TEST_F(PlaybackTest, PlaySelectionLeavesTheTargetWindow) {
    session.targetWindow = 42;
    start(kOneMessage, false);
    EXPECT_EQ(session.targetWindow, 42u);
}

TEST_F(PlaybackTest, RunCountsFollowRepeatAndPlayX) {
    struct Case {
        const char* name;
        bool repeat;
        bool playX;
        int target;
        int runs;  // -1: still running after the bound
    };
    const Case cases[] = {
        {"once", false, false, 0, 1},        {"repeat runs on", true, false, 0, -1},
        {"play X three", true, true, 3, 3},  {"play X zero runs once", true, true, 0, 1},
        {"play X one", true, true, 1, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        transcript.clear();
        session.repeat = c.repeat;
        view.playX = c.playX;
        if (c.playX) playback.setPlayTarget(c.target);
        start(kOneMessage);
        const int ticks = tickWhileOn(20);
        EXPECT_EQ(linesStartingWith("MessageBox"), c.runs < 0 ? 20 : c.runs);
        EXPECT_EQ(view.timer, c.runs < 0);
        EXPECT_EQ(view.shown, c.runs >= 0);
        EXPECT_EQ(ticks, c.runs < 0 ? 20 : c.runs);
        playback.stopPlay();
    }
}

TEST_F(PlaybackTest, VariablesOutliveARepeatButNotAPlay) {
    const std::string counter =
        "Function(Main);\nIf(done = 1);\nElse();\nInt(n, 0);\nInt(done, 1);\nEndIf();\nAdd(n, 1);\nEndFunction();";
    session.repeat = true;
    start(counter);
    EXPECT_EQ(tickWhileOn(3), 3);
    EXPECT_EQ(engine.getVariableAsString("n"), "3");
    playback.stopPlay();
    start(counter);
    EXPECT_EQ(tickWhileOn(1), 1);
    EXPECT_EQ(engine.getVariableAsString("n"), "1");
}

TEST_F(PlaybackTest, StopInsideARunEndsItAndCutsThePause) {
    session.repeat = true;
    start("Function(Main);\nWhile(1 = 1);\nPause(60000);\nEndWhile();\nEndFunction();");
    int yields = 0;
    clock.onYield = [&] {
        if (++yields == 5) playback.stopPlay();
    };
    playback.tick();
    EXPECT_EQ(yields, 5);
    EXPECT_TRUE(view.shown);
    EXPECT_FALSE(view.timer);
    EXPECT_GE(clock.cancels, 1);
}

// A stopped play lets go of what its run held, once no statement of the run
// can press again; a repeat keeps keys held from one run to the next.
TEST_F(PlaybackTest, AStoppedPlayLetsGoOfTheKeysAfterItsLastStatement) {
    struct Case {
        const char* name;
        bool repeat;
        int stopAtYield;  // 0: the play ends by itself
    };
    const Case cases[] = {{"stop between statements", true, 3}, {"stop in the pause", true, 4},
                          {"the end of a single run", false, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        transcript.clear();
        session.repeat = c.repeat;
        start("Function(Main);\nKeyDown(16);\nPause(60000);\nKeyDown(17);\nEndFunction();");
        int yields = 0;
        clock.onYield = [&] {
            if (++yields == c.stopAtYield) playback.stopPlay();
        };
        tickWhileOn(5);
        ASSERT_FALSE(view.timer);
        ASSERT_FALSE(transcript.empty());
        EXPECT_EQ(transcript.back(), "ReleaseAll");
        EXPECT_EQ(transcript.front(), "keybd_event 16 0") << "nothing let go before the run";
        clock.onYield = nullptr;
    }
}

TEST_F(PlaybackTest, ARepeatKeepsTheKeysHeldBetweenRuns) {
    session.repeat = true;
    start("Function(Main);\nKeyDown(16);\nEndFunction();");
    EXPECT_EQ(tickWhileOn(3), 3);
    EXPECT_EQ(std::count(transcript.begin(), transcript.end(), "ReleaseAll"), 0);
    playback.stopPlay();
    EXPECT_EQ(transcript.back(), "ReleaseAll");
}

TEST_F(PlaybackTest, TickNeverNests) {
    session.repeat = false;
    start(kOneMessage);
    int nested = 0;
    clock.onYield = [&] {
        ++nested;
        playback.tick();  // the timer firing again inside the run
    };
    playback.tick();
    EXPECT_EQ(linesStartingWith("MessageBox"), 1);
    EXPECT_FALSE(playback.inTick());
}

TEST_F(PlaybackTest, PlayDuringARunReplacesIt) {
    session.repeat = false;
    start("Function(Main);\nMessage(old, normal, t);\nPause(60000);\nMessage(old again, normal, t);\nEndFunction();");
    bool replaced = false;
    std::string second = "Function(Main);\nMessage(new, normal, t);\nEndFunction();";
    clock.onYield = [&] {
        if (replaced || transcript.empty()) return;
        replaced = true;
        playback.stopPlay();  // the Play handler stops first, then starts
        playback.start(second, true);
    };
    playback.tick();
    // The old run's end did not stop the new one.
    EXPECT_TRUE(view.timer);
    EXPECT_FALSE(view.shown);
    clock.onYield = nullptr;
    playback.tick();
    // The old run lets go of its keys before the new one starts.
    EXPECT_EQ(transcript, (std::vector<std::string>{"MessageBox 0 \"t\" \"old\"", "ReleaseAll",
                                                    "MessageBox 0 \"t\" \"new\"", "ReleaseAll"}));
    EXPECT_FALSE(view.timer);
    EXPECT_TRUE(view.shown);
}

TEST_F(PlaybackTest, PauseScriptMakesTheNextPlayResume) {
    session.repeat = true;
    start(kOneMessage);
    playback.pauseScript();
    EXPECT_FALSE(view.timer);
    EXPECT_TRUE(playback.resumePending());
    view.shown = true;
    EXPECT_TRUE(playback.resumeIfPending());
    EXPECT_TRUE(view.timer);
    EXPECT_TRUE(view.shown);  // a resume does not hide
    EXPECT_FALSE(playback.resumeIfPending());
}

}  // namespace
}  // namespace tarvoke::test
