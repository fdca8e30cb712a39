#pragma once
// Where a wait's deadline lies. Consecutive waits of a script are laid end to
// end: a wait that starts within kChainNs after the deadline at which the
// previous one ended counts from that deadline, not from now. So the small
// cost of the statements between two pauses (an injected click, a yield)
// does not add up over a recorded script of thousands of lines, while a
// pause after slow work (a capture, a message box) still waits in full.

#include <cstdint>
#include <optional>

namespace tarvoke::platform {

class WaitSchedule {
public:
    static constexpr int64_t kChainNs = 3'000'000;

    int64_t deadlineFor(int64_t nowNs, int32_t ms) const {
        const bool chained = m_lastDeadline && nowNs >= *m_lastDeadline && nowNs - *m_lastDeadline <= kChainNs;
        return (chained ? *m_lastDeadline : nowNs) + static_cast<int64_t>(ms) * 1'000'000;
    }
    // A wait ran to its deadline.
    void reached(int64_t deadlineNs) { m_lastDeadline = deadlineNs; }
    // A wait was cut short or another one ran inside it: the next starts afresh.
    void interrupted() { m_lastDeadline.reset(); }

private:
    std::optional<int64_t> m_lastDeadline;
};

}  // namespace tarvoke::platform
