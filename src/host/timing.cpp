#include "host/timing.h"

#include <algorithm>
#include <limits>

namespace tarvoke::host {
namespace {

bool goingOn(const GoOn& goOn) { return !goOn || goOn(); }

int32_t elapsedSince(Session& session, int64_t start) {
    const int64_t elapsed = session.platform.clock->monotonicMs() - start;
    return static_cast<int32_t>(std::clamp<int64_t>(elapsed, std::numeric_limits<int32_t>::min(),
                                                    std::numeric_limits<int32_t>::max()));
}

}  // namespace

void waitMilliseconds(Session& session, int32_t ms) { session.platform.clock->wait(std::max(ms, 0)); }

void waitSeconds(Session& session, int32_t n, const GoOn& goOn) {
    for (int32_t i = 0; i < n && goingOn(goOn); ++i) waitMilliseconds(session, 1000);
}

void waitMinutes(Session& session, int32_t n, const GoOn& goOn) {
    for (int32_t i = 0; i < n && goingOn(goOn); ++i) waitSeconds(session, 60, goOn);
}

void waitHours(Session& session, int32_t n, const GoOn& goOn) {
    for (int32_t i = 0; i < n && goingOn(goOn); ++i) waitMinutes(session, 60, goOn);
}

void startRunClock(Session& session) { session.runClockStart = session.platform.clock->monotonicMs(); }
int32_t readRunClock(Session& session) { return elapsedSince(session, session.runClockStart); }

}  // namespace tarvoke::host
