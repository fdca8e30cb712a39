#pragma once
// Time: the yield to the event loop, the one wait, and a monotonic clock.

#include <cstdint>

namespace tarvoke::platform {

class Clock {
public:
    virtual ~Clock() = default;
    // Handles every pending event once, then returns.
    virtual void yield() = 0;
    // Waits ms milliseconds while handling events; 0 or less yields once.
    // Returns early when cancelWaits() is called from a handler meanwhile.
    virtual void wait(int32_t ms) = 0;
    // Ends every wait in progress (Stop cuts a pause short).
    virtual void cancelWaits() = 0;
    // Milliseconds on a monotonic clock.
    virtual int64_t monotonicMs() = 0;
};

}  // namespace tarvoke::platform
