#pragma once
// A small event loop on ppoll(2), for the player: it needs no library, so a
// run starts without loading one. Handlers may add and end watches, and may
// turn the loop themselves (a wait inside a handler).

#include <chrono>
#include <cstdint>
#include <vector>

#include "platform/eventloop.h"

namespace tarvoke::platform {

class PollLoop : public EventLoop {
public:
    PollLoop();
    ~PollLoop() override;
    PollLoop(const PollLoop&) = delete;
    PollLoop& operator=(const PollLoop&) = delete;

    std::unique_ptr<Handle> watchReadable(int fd, Callback onReadable) override;
    std::unique_ptr<Handle> watchWritable(int fd, Callback onWritable) override;
    std::unique_ptr<Handle> every(std::chrono::milliseconds interval, Callback onTick) override;
    std::unique_ptr<Handle> beforeEachTurn(Callback hook) override;
    void turn(bool wait) override;

private:
    using Clock = std::chrono::steady_clock;
    enum class Kind { Readable, Writable, Timer, Hook };
    struct Entry {
        uint64_t id;
        Kind kind;
        int fd;
        Clock::duration interval;
        Clock::time_point due;
        // Shared, so that a handler that ends its own entry runs on safely.
        std::shared_ptr<Callback> callback;
    };
    class EntryHandle;

    std::unique_ptr<Handle> add(Entry entry);
    void remove(uint64_t id);
    Entry* find(uint64_t id);
    // How long a waiting turn may sleep: until the next timer, or for ever (-1).
    int64_t sleepNs(Clock::time_point now) const;
    void runEach(const std::vector<uint64_t>& ids);
    void runHooks();
    void runDueTimers();

    std::vector<Entry> m_entries;
    uint64_t m_nextId = 1;
    // Shared with the handles, which may outlive the loop.
    std::shared_ptr<PollLoop*> m_self;
};

}  // namespace tarvoke::platform
