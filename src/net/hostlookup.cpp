#include "net/hostlookup.h"

#include <netdb.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

#include "net/sockerrors.h"

namespace tarvoke::net {
namespace {

// Shared by the loop's side and the resolver's notification thread, which
// only writes the eventfd; neither ever touches the socket object.
struct Request {
    std::string name;
    addrinfo hints{};
    gaicb block{};
    int fd = -1;
    std::atomic<int> holders{2};
};

void letGo(Request* request) {
    if (request->holders.fetch_sub(1) != 1) return;
    if (request->block.ar_result) freeaddrinfo(request->block.ar_result);
    if (request->fd >= 0) ::close(request->fd);
    delete request;
}

void notified(sigval value) {
    auto* request = static_cast<Request*>(value.sival_ptr);
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(request->fd, &one, sizeof one);
    letGo(request);
}

int32_t lookupError(int code) {
    switch (code) {
    case EAI_AGAIN: return 11002;
    case EAI_FAIL: return 11003;
    case EAI_NODATA: case EAI_ADDRFAMILY: return 11004;
    case EAI_MEMORY: return 10055;
    default: return HostNotFound;
    }
}

class PendingLookup : public platform::EventLoop::Handle {
public:
    PendingLookup(Request* request, platform::EventLoop& loop, HostLookup::Done done)
        : m_request(request), m_done(std::move(done)) {
        m_watch = loop.watchReadable(request->fd, [this] { answered(); });
    }
    ~PendingLookup() override { letGo(m_request); }

private:
    void answered() {
        uint64_t count;
        if (::read(m_request->fd, &count, sizeof count) < 0) return;
        m_watch.reset();
        const int code = gai_error(&m_request->block);
        in_addr address{};
        int32_t error = code == 0 ? 0 : lookupError(code);
        if (code == 0) {
            error = HostNotFound;
            for (const addrinfo* entry = m_request->block.ar_result; entry; entry = entry->ai_next)
                if (entry->ai_family == AF_INET) {
                    address = reinterpret_cast<const sockaddr_in*>(entry->ai_addr)->sin_addr;
                    error = 0;
                    break;
                }
        }
        // The callback may drop this handle: nothing of it is used after.
        HostLookup::Done done = std::move(m_done);
        done(address, error);
    }

    Request* m_request;
    HostLookup::Done m_done;
    std::unique_ptr<platform::EventLoop::Handle> m_watch;
};

// Stands for a look-up that could not start: it answers in the next turn,
// never from inside start().
class FailedLookup : public platform::EventLoop::Handle {
public:
    FailedLookup(platform::EventLoop& loop, int32_t error, HostLookup::Done done) {
        m_hook = loop.beforeEachTurn([this, error, done = std::move(done)]() mutable {
            m_hook.reset();
            HostLookup::Done call = std::move(done);
            call(in_addr{}, error);
        });
    }

private:
    std::unique_ptr<platform::EventLoop::Handle> m_hook;
};

}  // namespace

HostLookup::Pending SystemLookup::start(const std::string& host, Done done) {
    auto* request = new Request;
    request->name = host;
    request->hints.ai_family = AF_INET;
    request->hints.ai_socktype = SOCK_STREAM;
    request->block.ar_name = request->name.c_str();
    request->block.ar_request = &request->hints;
    request->fd = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    sigevent event{};
    event.sigev_notify = SIGEV_THREAD;
    event.sigev_value.sival_ptr = request;
    event.sigev_notify_function = notified;
    gaicb* list[] = {&request->block};
    if (request->fd < 0 || getaddrinfo_a(GAI_NOWAIT, list, 1, &event) != 0) {
        request->holders = 1;
        letGo(request);
        return std::make_unique<FailedLookup>(m_loop, 10055, std::move(done));
    }
    return std::make_unique<PendingLookup>(request, m_loop, std::move(done));
}

}  // namespace tarvoke::net
