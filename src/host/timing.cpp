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

void WaitMilliseconds(Session& session, int32_t ms) { session.platform.clock->wait(std::max(ms, 0)); }

void WaitSeconds(Session& session, int32_t n, const GoOn& goOn) {
    for (int32_t i = 0; i < n && goingOn(goOn); ++i) WaitMilliseconds(session, 1000);
}

void WaitMinutes(Session& session, int32_t n, const GoOn& goOn) {
    for (int32_t i = 0; i < n && goingOn(goOn); ++i) WaitSeconds(session, 60, goOn);
}

void WaitHours(Session& session, int32_t n, const GoOn& goOn) {
    for (int32_t i = 0; i < n && goingOn(goOn); ++i) WaitMinutes(session, 60, goOn);
}

void StartEventClock(Session& session) { session.eventClockStart = session.platform.clock->monotonicMs(); }
int32_t ReadEventClock(Session& session) { return elapsedSince(session, session.eventClockStart); }
void StartRunClock(Session& session) { session.runClockStart = session.platform.clock->monotonicMs(); }
int32_t ReadRunClock(Session& session) { return elapsedSince(session, session.runClockStart); }

}  // namespace tarvoke::host
