#include "recorder/displaytime.h"

#include <algorithm>

namespace tarvoke::recorder {

DisplayTime::Instant DisplayTime::stamp(uint32_t stamp, int64_t receivedAt) {
    // Unwrapped next to where the stamp is expected: a change is read soon
    // after it happens, far less than 2^31 ms later.
    const int64_t expected = receivedAt + m_offset;
    const int64_t unwrapped = expected + static_cast<int32_t>(stamp - static_cast<uint32_t>(expected));
    // A stamp is never later than its reading; the least delay is the best
    // guess of the offset.
    const int64_t offset = unwrapped - receivedAt;
    m_offset = m_known ? std::max(m_offset, offset) : offset;
    m_known = true;
    return {unwrapped, true};
}

int64_t DisplayTime::between(Instant from, Instant to) const {
    const auto onDisplay = [this](Instant at) { return at.display ? at.ms : at.ms + m_offset; };
    if (from.display == to.display) return to.ms - from.ms;
    return onDisplay(to) - onDisplay(from);
}

}  // namespace tarvoke::recorder
