#pragma once
// The real clock: the yield gives the event loop a turn, at most every tenth
// of a millisecond, and each wait keeps its own absolute deadline on the
// monotonic clock in a timerfd that the event loop watches, so handlers run
// while a script sleeps and a nested wait neither shares nor re-arms an
// outer one.

#include "platform/clock.h"
#include "platform/eventloop.h"
#include "platform/turnpacer.h"
#include "platform/waitschedule.h"

#include <cstdint>

namespace tarvoke::platform::x11 {

class RealClock : public Clock {
public:
    // Lowers the timer slack of the thread, so that wake-ups come on time.
    explicit RealClock(EventLoop& loop);
    void yield() override;
    void wait(int32_t ms) override;
    void cancelWaits() override { ++m_cancels; }
    // Changes with every cancelWaits (a stop), for work that is no wait.
    uint64_t cancels() const { return m_cancels; }
    int64_t monotonicMs() override;

private:
    EventLoop& m_loop;
    // Waits started before the latest cancelWaits end; those started after run on.
    uint64_t m_cancels = 0;
    TurnPacer m_pacer;
    int m_depth = 0;  // waits in progress, nested in each other
    WaitSchedule m_schedule;
};

}  // namespace tarvoke::platform::x11
