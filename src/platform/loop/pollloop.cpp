#include "platform/loop/pollloop.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace tarvoke::platform {

class PollLoop::EntryHandle : public Handle {
public:
    EntryHandle(std::shared_ptr<PollLoop*> loop, uint64_t id) : m_loop(std::move(loop)), m_id(id) {}
    ~EntryHandle() override {
        if (*m_loop) (*m_loop)->remove(m_id);
    }

private:
    std::shared_ptr<PollLoop*> m_loop;
    uint64_t m_id;
};

PollLoop::PollLoop() : m_self(std::make_shared<PollLoop*>(this)) {}

PollLoop::~PollLoop() { *m_self = nullptr; }

std::unique_ptr<EventLoop::Handle> PollLoop::watchReadable(int fd, Callback onReadable) {
    return add({0, Kind::Readable, fd, {}, {}, std::make_shared<Callback>(std::move(onReadable))});
}

std::unique_ptr<EventLoop::Handle> PollLoop::watchWritable(int fd, Callback onWritable) {
    return add({0, Kind::Writable, fd, {}, {}, std::make_shared<Callback>(std::move(onWritable))});
}

std::unique_ptr<EventLoop::Handle> PollLoop::every(std::chrono::milliseconds interval, Callback onTick) {
    const Clock::duration step = std::max<Clock::duration>(interval, std::chrono::milliseconds(1));
    return add({0, Kind::Timer, -1, step, Clock::now() + step, std::make_shared<Callback>(std::move(onTick))});
}

std::unique_ptr<EventLoop::Handle> PollLoop::beforeEachTurn(Callback hook) {
    return add({0, Kind::Hook, -1, {}, {}, std::make_shared<Callback>(std::move(hook))});
}

std::unique_ptr<EventLoop::Handle> PollLoop::add(Entry entry) {
    entry.id = m_nextId++;
    m_entries.push_back(std::move(entry));
    return std::make_unique<EntryHandle>(m_self, m_entries.back().id);
}

void PollLoop::remove(uint64_t id) {
    std::erase_if(m_entries, [id](const Entry& entry) { return entry.id == id; });
}

PollLoop::Entry* PollLoop::find(uint64_t id) {
    const auto it = std::find_if(m_entries.begin(), m_entries.end(), [id](const Entry& entry) { return entry.id == id; });
    return it == m_entries.end() ? nullptr : &*it;
}

int64_t PollLoop::sleepNs(Clock::time_point now) const {
    int64_t shortest = -1;
    for (const Entry& entry : m_entries) {
        if (entry.kind != Kind::Timer) continue;
        const int64_t ns = std::max<int64_t>(0, std::chrono::nanoseconds(entry.due - now).count());
        if (shortest < 0 || ns < shortest) shortest = ns;
    }
    return shortest;
}

void PollLoop::turn(bool wait) {
    runHooks();
    std::vector<pollfd> fds;
    std::vector<uint64_t> ids;
    for (const Entry& entry : m_entries) {
        if (entry.kind != Kind::Readable && entry.kind != Kind::Writable) continue;
        fds.push_back({entry.fd, static_cast<short>(entry.kind == Kind::Readable ? POLLIN : POLLOUT), 0});
        ids.push_back(entry.id);
    }
    const int64_t ns = wait ? sleepNs(Clock::now()) : 0;
    const timespec timeout{static_cast<time_t>(ns / 1'000'000'000), static_cast<long>(ns % 1'000'000'000)};
    // A signal cuts the sleep short; its handler's pipe is among the fds.
    const int count = ::ppoll(fds.data(), fds.size(), ns < 0 ? nullptr : &timeout, nullptr);
    std::vector<uint64_t> ready;
    for (size_t i = 0; count > 0 && i < fds.size(); ++i)
        if (fds[i].revents & (POLLIN | POLLOUT | POLLHUP | POLLERR)) ready.push_back(ids[i]);
    runEach(ready);
    runDueTimers();
}

// Each handler is looked up again before it runs: the one before may have
// ended it. The callback is held while it runs, so it may end itself.
void PollLoop::runEach(const std::vector<uint64_t>& ids) {
    for (uint64_t id : ids)
        if (Entry* entry = find(id)) {
            const std::shared_ptr<Callback> callback = entry->callback;
            (*callback)();
        }
}

void PollLoop::runHooks() {
    std::vector<uint64_t> hooks;
    for (const Entry& entry : m_entries)
        if (entry.kind == Kind::Hook) hooks.push_back(entry.id);
    runEach(hooks);
}

void PollLoop::runDueTimers() {
    const Clock::time_point now = Clock::now();
    std::vector<uint64_t> due;
    for (const Entry& entry : m_entries)
        if (entry.kind == Kind::Timer && entry.due <= now) due.push_back(entry.id);
    for (uint64_t id : due) {
        Entry* entry = find(id);
        if (!entry) continue;
        // Ticks missed while the loop was busy are not made up.
        entry->due += entry->interval;
        if (entry->due <= now) entry->due = now + entry->interval;
        const std::shared_ptr<Callback> callback = entry->callback;
        (*callback)();
    }
}

}  // namespace tarvoke::platform
