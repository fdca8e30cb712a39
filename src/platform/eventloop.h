#pragma once
// The event loop that the desktop's parts watch through: descriptors that
// become readable, repeating timers, and hooks that run before every turn.
// One thread runs it. The windows' program drives Qt's loop; the player, which
// shows no widget, a small loop of its own that starts in no time.

#include <chrono>
#include <functional>
#include <memory>

namespace tarvoke::platform {

class EventLoop {
public:
    using Callback = std::function<void()>;

    // What a watch or a timer is kept by: it ends when this is destroyed,
    // also from inside its own callback.
    class Handle {
    public:
        virtual ~Handle() = default;
    };

    virtual ~EventLoop() = default;
    // Calls onReadable in each turn that finds fd readable.
    [[nodiscard]] virtual std::unique_ptr<Handle> watchReadable(int fd, Callback onReadable) = 0;
    // Calls onWritable in each turn that finds fd writable (or failed): for a
    // connection coming up and output that would have blocked.
    [[nodiscard]] virtual std::unique_ptr<Handle> watchWritable(int fd, Callback onWritable) = 0;
    // Calls onTick every interval, first one interval from now.
    [[nodiscard]] virtual std::unique_ptr<Handle> every(std::chrono::milliseconds interval, Callback onTick) = 0;
    // Runs hook at the start of every turn, before the loop reads or waits:
    // for output that must leave before a wait.
    [[nodiscard]] virtual std::unique_ptr<Handle> beforeEachTurn(Callback hook) = 0;
    // One turn: runs what is ready; with wait, first sleeps until something is.
    virtual void turn(bool wait) = 0;
};

}  // namespace tarvoke::platform
