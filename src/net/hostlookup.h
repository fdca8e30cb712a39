#pragma once
// Host name look-ups that never hold up the loop: the answer comes back as a
// callback on the loop's thread.

#include <netinet/in.h>

#include <functional>
#include <memory>
#include <string>

#include "platform/eventloop.h"

namespace tarvoke::net {

class HostLookup {
public:
    // The first IPv4 address of the host, or an error number (11001 and kin)
    // with address 0.
    using Done = std::function<void(in_addr address, int32_t error)>;
    // Dropping it cancels the look-up: done is not called after that.
    using Pending = std::unique_ptr<platform::EventLoop::Handle>;

    virtual ~HostLookup() = default;
    virtual Pending start(const std::string& host, Done done) = 0;
};

// The system's resolver (getaddrinfo_a), answered through an eventfd the loop
// watches. A look-up that hangs costs a resolver thread of the C library and
// nothing else: its record is freed by whichever side lets go last.
class SystemLookup : public HostLookup {
public:
    explicit SystemLookup(platform::EventLoop& loop) : m_loop(loop) {}
    Pending start(const std::string& host, Done done) override;

private:
    platform::EventLoop& m_loop;
};

}  // namespace tarvoke::net
