#pragma once
// The one wait of the program and its stopwatch. Every pause, and the
// windows' short waits, rest on waitMilliseconds.

#include <cstdint>
#include <functional>

#include "host/session.h"

namespace tarvoke::host {

// Waits ms milliseconds while handling events; 0 or less yields once.
void waitMilliseconds(Session& session, int32_t ms);

// n waits of a second (of 60 seconds, of 60 minutes); nothing when n is below
// 1. goOn is asked before each second: a stopped run waits out no more.
using GoOn = std::function<bool()>;
void waitSeconds(Session& session, int32_t n, const GoOn& goOn = {});
void waitMinutes(Session& session, int32_t n, const GoOn& goOn = {});
void waitHours(Session& session, int32_t n, const GoOn& goOn = {});

// The stopwatch of Correct Time, White Debug mode and the recording time.
void startRunClock(Session& session);
int32_t readRunClock(Session& session);

}  // namespace tarvoke::host
