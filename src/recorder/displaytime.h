#pragma once
// The recorder's clock: the display's own time stamps where a change has
// one, the local monotonic clock elsewhere (the start, the close). Between
// two changes the time is the difference of their stamps, exact whatever
// the delay with which each was read. Across the two clocks: a local X
// server stamps with the same monotonic clock, so the offset is 0 unless
// the first stamp says otherwise; then it is the smallest delay seen.

#include <cstdint>

namespace tarvoke::recorder {

class DisplayTime {
public:
    // A moment on one of the two clocks.
    struct Instant {
        int64_t ms = 0;
        bool display = false;  // a stamp of the display, unwrapped; else local
    };

    // The stamp of a change (32-bit, wrapping) that was read at the local
    // time receivedAt; also learns the offset between the clocks.
    Instant stamp(uint32_t stamp, int64_t receivedAt);
    static Instant local(int64_t ms) { return {ms, false}; }
    // Milliseconds from one moment to a later one.
    int64_t between(Instant from, Instant to) const;

private:
    bool m_known = false;
    int64_t m_offset = 0;  // display minus local, at the smallest delay seen
};

}  // namespace tarvoke::recorder
