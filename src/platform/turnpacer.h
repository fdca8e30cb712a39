#pragma once
// How often a yield gives the event loop a turn. A turn costs system calls
// even when nothing waits for it, and the engine yields before every
// statement; nothing that waits for a turn (a hotkey poll every
// millisecond, a stop signal, a repaint) notices a tenth of a millisecond.

#include <chrono>

namespace tarvoke::platform {

class TurnPacer {
public:
    static constexpr std::chrono::nanoseconds kInterval{100'000};

    // True when the last turn was at least kInterval ago; the caller then
    // gives one.
    bool turnDue() {
        const auto now = std::chrono::steady_clock::now();
        if (now - m_lastTurn < kInterval) return false;
        m_lastTurn = now;
        return true;
    }

private:
    std::chrono::steady_clock::time_point m_lastTurn;
};

}  // namespace tarvoke::platform
