// The player's poll loop: handlers in their order, waits until the next timer;
// and where consecutive waits end.

#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>

#include "platform/loop/pollloop.h"
#include "platform/waitschedule.h"

namespace tarvoke::test {
namespace {

using std::chrono::milliseconds;
using Handle = std::unique_ptr<platform::EventLoop::Handle>;

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


constexpr int64_t kMs = 1'000'000;

TEST(WaitSchedule, ConsecutiveWaitsLieEndToEndUnlessInterrupted) {
    platform::WaitSchedule schedule;
    EXPECT_EQ(schedule.deadlineFor(100 * kMs, 10), 110 * kMs);  // the first counts from now
    schedule.reached(110 * kMs);
    // 0.4 ms went on a click between the pauses: the next counts from 110.
    EXPECT_EQ(schedule.deadlineFor(110 * kMs + 400'000, 10), 120 * kMs);
    schedule.reached(120 * kMs);
    // After slow work the pause waits in full.
    EXPECT_EQ(schedule.deadlineFor(130 * kMs, 10), 140 * kMs);
    schedule.reached(140 * kMs);
    schedule.interrupted();
    EXPECT_EQ(schedule.deadlineFor(141 * kMs, 5), 146 * kMs);
    schedule.reached(146 * kMs);
    EXPECT_EQ(schedule.deadlineFor(145 * kMs, 5), 150 * kMs);  // never counts from a deadline still ahead
}
}  // namespace
}  // namespace tarvoke::test
