#include <gtest/gtest.h>

#include "platform/waitschedule.h"

namespace tarvoke::platform {
namespace {

constexpr int64_t kMs = 1'000'000;

TEST(WaitSchedule, ConsecutiveWaitsLieEndToEndUnlessInterrupted) {
    WaitSchedule schedule;
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
}  // namespace tarvoke::platform
