#pragma once
// The one wait of the program and the two stopwatches. Every pause, and the
// windows' short waits, rest on WaitMilliseconds.

#include <cstdint>
#include <functional>

#include "host/session.h"

namespace tarvoke::host {

// Waits ms milliseconds while handling events; 0 or less yields once.
void WaitMilliseconds(Session& session, int32_t ms);

// n waits of a second (of 60 seconds, of 60 minutes); nothing when n is below
// 1. goOn is asked before each second: a stopped run waits out no more.
using GoOn = std::function<bool()>;
void WaitSeconds(Session& session, int32_t n, const GoOn& goOn = {});
void WaitMinutes(Session& session, int32_t n, const GoOn& goOn = {});
void WaitHours(Session& session, int32_t n, const GoOn& goOn = {});

// The first stopwatch: the recorder's time between events.
void StartEventClock(Session& session);
int32_t ReadEventClock(Session& session);
// The second stopwatch: Correct Time, White Debug mode, the recording time.
void StartRunClock(Session& session);
int32_t ReadRunClock(Session& session);

}  // namespace tarvoke::host
