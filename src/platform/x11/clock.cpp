#include "platform/x11/clock.h"

#include <sys/prctl.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <ctime>

namespace tarvoke::platform::x11 {
namespace {

constexpr unsigned long kTimerSlackNs = 1000;

timespec monotonicNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

timespec addMs(timespec time, int32_t ms) {
    time.tv_sec += ms / 1000;
    time.tv_nsec += static_cast<long>(ms % 1000) * 1000000L;
    if (time.tv_nsec >= 1000000000L) {
        time.tv_nsec -= 1000000000L;
        ++time.tv_sec;
    }
    return time;
}

}  // namespace

RealClock::RealClock() { prctl(PR_SET_TIMERSLACK, kTimerSlackNs, 0, 0, 0); }

void RealClock::yield() { QCoreApplication::processEvents(); }

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
    itimerspec deadline{};
    deadline.it_value = addMs(monotonicNow(), ms);
    timerfd_settime(fd, TFD_TIMER_ABSTIME, &deadline, nullptr);

    bool due = false;
    const uint64_t cancels = m_cancels;
    {
        QSocketNotifier notifier(fd, QSocketNotifier::Read);
        QObject::connect(&notifier, &QSocketNotifier::activated, [&] {
            uint64_t expirations = 0;
            [[maybe_unused]] const ssize_t got = ::read(fd, &expirations, sizeof expirations);
            notifier.setEnabled(false);
            due = true;
        });
        // Each round sleeps until something happens (the deadline, input,
        // a signal's pipe, a timer) and handles it.
        while (!due && cancels == m_cancels) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    ::close(fd);
}

}  // namespace tarvoke::platform::x11
