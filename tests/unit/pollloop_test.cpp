// The player's poll loop: the yield before every statement gives it a turn,
// so its timers and watches work inside a run that never ends by itself.

#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>

#include "engine/sc.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/dryrun/dryrun.h"
#include "platform/loop/pollloop.h"
#include "playback/playback.h"

namespace tarvoke::test {
namespace {

using std::chrono::milliseconds;
using Handle = std::unique_ptr<platform::EventLoop::Handle>;

class PlayerLoopTest : public ::testing::Test {
protected:
    PlayerLoopTest() {
        session.platform = platform.platform();
    }

    platform::PollLoop loop;
    std::vector<std::string> printed;
    platform::dryrun::DryRunPlatform platform{[this](std::string_view line) { printed.emplace_back(line); },
                                              [this] { loop.turn(false); }};
    host::Session session;
    host::HostCommands commands{session};
    engine::SC engine{commands};
    playback::Playback playback{engine, session};
};

TEST_F(PlayerLoopTest, ATimerStopsAnEndlessLoop) {
    playback.load("Function(Main); While(1=1); EndWhile(); EndFunction();");
    int fired = 0;
    const Handle timer = loop.every(milliseconds(50), [&] {
        ++fired;
        playback.stop();
    });
    playback.run();
    EXPECT_EQ(fired, 1);
    EXPECT_TRUE(playback.stopRequested());
}

TEST_F(PlayerLoopTest, ARepeatingTimerKeepsFiringInALoop) {
    // The timer counts to 3 into a variable the loop reads.
    playback.load("Function(Main); Int(n, 0); While(n < 3); EndWhile(); Message(n, normal, done); EndFunction();");
    const Handle timer = loop.every(milliseconds(5), [&] {
        std::string one = "1";
        engine.getVariable(one);
        engine.addSetVariable("n", engine::ValueKind::Long, engine::Operation::Add);
    });
    playback.run();
    EXPECT_EQ(printed, (std::vector<std::string>{"MessageBox 0 \"done\" \"3\""}));
}

class PollLoopTest : public ::testing::Test {
protected:
    PollLoopTest() { EXPECT_EQ(::pipe(ends), 0); }
    ~PollLoopTest() override {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    void write() { EXPECT_EQ(::write(ends[1], "x", 1), 1); }

    platform::PollLoop loop;
    int ends[2] = {-1, -1};
};

// Hooks run first, then readable descriptors, then due timers; a handler
// may end its own watch and another's.
TEST_F(PollLoopTest, HandlersRunInOrderAndMayEndWatches) {
    std::vector<std::string> calls;
    Handle hook, readable, other, timer;
    hook = loop.beforeEachTurn([&] { calls.push_back("hook"); });
    readable = loop.watchReadable(ends[0], [&] {
        calls.push_back("readable");
        readable.reset();
        other.reset();
    });
    other = loop.watchReadable(ends[0], [&] { calls.push_back("other"); });
    timer = loop.every(milliseconds(1), [&] { calls.push_back("timer"); });
    write();
    ::usleep(2000);
    loop.turn(false);
    loop.turn(false);
    EXPECT_EQ(calls, (std::vector<std::string>{"hook", "readable", "timer", "hook"}));
}

// A waiting turn sleeps until the next timer, and no longer.
TEST_F(PollLoopTest, AWaitingTurnWakesForTheNextTimer) {
    int ticks = 0;
    const Handle timer = loop.every(milliseconds(20), [&] { ++ticks; });
    const auto start = std::chrono::steady_clock::now();
    while (ticks == 0) loop.turn(true);
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took, milliseconds(20));
    EXPECT_LT(took, milliseconds(1000));
}

TEST_F(PollLoopTest, AHandleMayOutliveItsLoop) {
    auto other = std::make_unique<platform::PollLoop>();
    Handle watch = other->watchReadable(ends[0], [] {});
    other.reset();
    watch.reset();
}

}  // namespace
}  // namespace tarvoke::test
