#pragma once
// SIGINT and SIGTERM turned into an event of the loop, so a run can stop at
// its next yield, also inside a pause.

#include <functional>
#include <atomic>
#include <memory>

#include "platform/eventloop.h"

namespace tarvoke::player {

class StopSignals {
public:
    // onSignal runs in the event loop with the signal's number.
    StopSignals(platform::EventLoop& loop, std::function<void(int)> onSignal);
    ~StopSignals();
    // How many stop signals came, and the number of the last one (0: none),
    // counted as they arrive: a long step looks at them without waiting for
    // a turn of the loop.
    static unsigned count();
    static int last();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

private:
    void readSignal();
    std::function<void(int)> m_onSignal;
    std::unique_ptr<platform::EventLoop::Handle> m_watch;
};

}  // namespace tarvoke::player
