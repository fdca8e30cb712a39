#include "platform/x11/clock.h"

#include <sys/prctl.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <ctime>

namespace tarvoke::platform::x11 {
namespace {

constexpr unsigned long kTimerSlackNs = 1000;

timespec monotonicNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

int64_t nanoseconds(timespec time) { return static_cast<int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec; }

timespec fromNanoseconds(int64_t ns) {
    return timespec{static_cast<time_t>(ns / 1'000'000'000), static_cast<long>(ns % 1'000'000'000)};
}

}  // namespace

RealClock::RealClock(EventLoop& loop) : m_loop(loop) { prctl(PR_SET_TIMERSLACK, kTimerSlackNs, 0, 0, 0); }

void RealClock::yield() {
    if (m_pacer.turnDue()) m_loop.turn(false);
}

int64_t RealClock::monotonicMs() {
    const timespec now = monotonicNow();
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

void RealClock::wait(int32_t ms) {
    if (ms <= 0) {
        yield();
        return;
    }
    const int fd = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    if (fd < 0) {
        yield();
        return;
    }
    // Only the outermost wait is laid end to end with the one before it.
    const int64_t nowNs = nanoseconds(monotonicNow());
    const int64_t deadlineNs = m_depth == 0 ? m_schedule.deadlineFor(nowNs, ms) : nowNs + int64_t{ms} * 1'000'000;
    if (m_depth > 0) m_schedule.interrupted();
    itimerspec deadline{};
    deadline.it_value = fromNanoseconds(deadlineNs);
    timerfd_settime(fd, TFD_TIMER_ABSTIME, &deadline, nullptr);
    ++m_depth;

    bool due = false;
    const uint64_t cancels = m_cancels;
    {
        const auto watch = m_loop.watchReadable(fd, [&] {
            uint64_t expirations = 0;
            [[maybe_unused]] const ssize_t got = ::read(fd, &expirations, sizeof expirations);
            due = true;
        });
        // Each round sleeps until something happens (the deadline, input,
        // a signal's pipe, a timer) and handles it.
        while (!due && cancels == m_cancels) m_loop.turn(true);
    }
    ::close(fd);
    if (--m_depth == 0) {
        if (due) m_schedule.reached(deadlineNs);
        else m_schedule.interrupted();
    }
}

}  // namespace tarvoke::platform::x11
