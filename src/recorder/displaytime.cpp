#include "recorder/displaytime.h"

#include <algorithm>

namespace tarvoke::recorder {
namespace {

// A local display stamps with the same monotonic clock: a first stamp up to
// this much older than its reading was only read late.
constexpr int64_t kSameClockMs = 1000;

}  // namespace

DisplayTime::Instant DisplayTime::stamp(uint32_t stamp, int64_t receivedAt) {
    // Unwrapped next to where the stamp is expected: a change is read soon
    // after it happens, far less than 2^31 ms later.
    const int64_t expected = receivedAt + m_offset;
    const int64_t unwrapped = expected + static_cast<int32_t>(stamp - static_cast<uint32_t>(expected));
    // A stamp is never later than its reading; the least delay is the best
    // guess of the offset.
    const int64_t offset = unwrapped - receivedAt;
    if (m_known)
        m_offset = std::max(m_offset, offset);
    else if (offset > 0 || offset < -kSameClockMs)
        m_offset = offset;  // another clock (a display on another machine)
    m_known = true;
    return {unwrapped, true};
}

int64_t DisplayTime::between(Instant from, Instant to) const {
    const auto onDisplay = [this](Instant at) { return at.display ? at.ms : at.ms + m_offset; };
    if (from.display == to.display) return to.ms - from.ms;
    return onDisplay(to) - onDisplay(from);
}

}  // namespace tarvoke::recorder
