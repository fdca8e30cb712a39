#include "net/unisock.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <map>

#include "net/textlines.h"
#include "platform/messagebox.h"

namespace tarvoke::net {

// A connection a listening object has taken and that waits for accept().
struct UniSock::Waiting {
    int fd;
    sockaddr_in address;
};

namespace {

// The live objects by their RequestID: accept() finds the listener here.
std::map<int32_t, UniSock*>& liveObjects() {
    static std::map<int32_t, UniSock*> objects;
    return objects;
}
int32_t nextId = 1;

template <class Handler, class... Args>
void raise(const Handler& handler, Args&&... args) {
    // A copy: the handler may replace itself.
    if (Handler copy = handler) copy(std::forward<Args>(args)...);
}

std::string dotted(in_addr address) {
    char text[INET_ADDRSTRLEN] = {};
    ::inet_ntop(AF_INET, &address, text, sizeof text);
    return text;
}

sockaddr_in endpoint(in_addr address, int32_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr = address;
    result.sin_port = htons(static_cast<uint16_t>(port));
    return result;
}

// A numeric address as inet_addr reads it, else the first address of the
// name. Blocking: only for what the caller names locally and for UDP.
bool addressOf(const std::string& host, in_addr& address) {
    if (::inet_aton(host.c_str(), &address)) return true;
    addrinfo hints{};
    hints.ai_family = AF_INET;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0 || !found) return false;
    address = reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr;
    ::freeaddrinfo(found);
    return true;
}

size_t optionSize(int fd, int option) {
    int value = 0;
    socklen_t length = sizeof value;
    if (::getsockopt(fd, SOL_SOCKET, option, &value, &length) != 0 || value <= 0) return 4096;
    return static_cast<size_t>(value);
}

bool validPort(int32_t port) { return port >= 1 && port <= 65535; }

// The largest payload of one IPv4 datagram.
constexpr size_t kDatagramMax = 65507;

}  // namespace

UniSock::UniSock(platform::EventLoop& loop, HostLookup* lookup, platform::MessageBoxes* boxes)
    : m_loop(loop), m_lookup(lookup), m_boxes(boxes), m_id(nextId++) {
    if (!m_lookup) {
        m_ownLookup = std::make_unique<SystemLookup>(loop);
        m_lookup = m_ownLookup.get();
    }
    liveObjects()[m_id] = this;
}

UniSock::~UniSock() {
    liveObjects().erase(m_id);
    *m_alive = false;
    closeQuietly();
}

// Everything but the events: the end of closeSocket, and the end of the object.
void UniSock::closeQuietly() {
    m_pendingLookup.reset();
    m_readWatch.reset();
    m_writeWatch.reset();
    if (m_waiting) ::close(m_waiting->fd);
    m_waiting.reset();
    // close() on a socket fails only for a bad descriptor; nothing is left
    // to do about it.
    if (m_fd >= 0) ::close(m_fd);
    m_fd = -1;
    m_received = {};
    m_receivedCount = 0;
    m_toSend = {};
    m_localIp = {};
    m_localPort = 0;
    m_boundPort = 0;
    m_bound = m_listening = m_connecting = false;
}

bool UniSock::makeSocket() {
    const bool udp = isUdp();
    m_fd = ::socket(AF_INET, (udp ? SOCK_DGRAM : SOCK_STREAM) | SOCK_NONBLOCK | SOCK_CLOEXEC, udp ? IPPROTO_UDP : IPPROTO_TCP);
    if (m_fd < 0) {
        report(SockState::Error, fromErrno(errno), "Socket");
        return false;
    }
    const int on = 1;
    if (udp) {
        ::setsockopt(m_fd, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
        m_receiveChunk = m_sendChunk = kDatagramMax;
        watch();
    } else {
        // A server restarted at once may take its port again.
        ::setsockopt(m_fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        m_receiveChunk = optionSize(m_fd, SO_RCVBUF);
        m_sendChunk = optionSize(m_fd, SO_SNDBUF);
    }
    return true;
}

void UniSock::watch() {
    m_readWatch = m_loop.watchReadable(m_fd, [this] { readable(); });
}

void UniSock::watchWrites(bool on) {
    if (!on) m_writeWatch.reset();
    else if (!m_writeWatch) m_writeWatch = m_loop.watchWritable(m_fd, [this] { writable(); });
}

bool UniSock::bind(int32_t localPort, const std::string& localIp) {
    if (m_fd < 0 && !makeSocket()) return false;
    return bindSteps(localPort, localIp);
}

bool UniSock::bindSteps(int32_t port, const std::string& address) {
    if (m_state == SockState::Open || m_bound) return true;
    if (!validPort(port)) port = m_localPort;
    in_addr local{htonl(INADDR_ANY)};
    if (!address.empty() && !addressOf(address, local)) {
        report(SockState::Error, HostNotFound, "Private_Bind");
        return false;
    }
    const sockaddr_in where = endpoint(local, port);
    if (::bind(m_fd, reinterpret_cast<const sockaddr*>(&where), sizeof where) != 0) {
        report(SockState::Error, fromErrno(errno), "Private_Bind");
        return false;
    }
    m_bound = true;
    m_localIp = local;
    if (port != 0) {
        m_localPort = port;
        report(SockState::Open);
    } else {
        sockaddr_in given{};
        socklen_t length = sizeof given;
        if (::getsockname(m_fd, reinterpret_cast<sockaddr*>(&given), &length) == 0) m_boundPort = ntohs(given.sin_port);
    }
    return true;
}

bool UniSock::listen() {
    if (m_state != SockState::Closed && m_state != SockState::Open) throw SocketError(InvalidOperation, "UniSock.Listen");
    if (!bind()) return false;
    if (::listen(m_fd, 5) != 0) throw SocketError(fromErrno(errno), "UniSock.Listen");
    m_listening = true;
    watch();
    return true;
}

bool UniSock::connect(const std::string& remoteHost, int32_t remotePort) {
    if (!remoteHost.empty()) m_remoteHost = remoteHost;
    if (validPort(remotePort)) m_remotePort = remotePort;
    if (m_remoteHost.empty()) {
        report(SockState::Error, 0, "Connect");
        return false;
    }
    if (m_fd < 0 && !makeSocket()) return false;
    if (isUdp()) return bindSteps(0, {});
    in_addr address{};
    if (::inet_aton(m_remoteHost.c_str(), &address)) return connectIp(address, true);
    m_pendingLookup.reset();
    m_pendingLookup = m_lookup->start(m_remoteHost, [this](in_addr found, int32_t error) {
        const auto alive = m_alive;
        m_pendingLookup.reset();
        if (error != 0) {
            report(SockState::Error, error, "WndProc");
            return;
        }
        report(SockState::HostFound);
        if (*alive && m_fd >= 0) connectIp(found, false);
    });
    report(SockState::LookingUp);
    return true;
}

bool UniSock::connectIp(in_addr address, bool raiseToCaller) {
    if (m_fd < 0 || !validPort(m_remotePort)) {
        report(SockState::Error, OutOfRange, "ConnectIP");
        return false;
    }
    const auto alive = m_alive;
    const int fd = m_fd;
    report(SockState::Connecting);
    if (!*alive || m_fd != fd) return false;
    m_remoteIp = address;
    const sockaddr_in where = endpoint(address, m_remotePort);
    if (::connect(m_fd, reinterpret_cast<const sockaddr*>(&where), sizeof where) == 0 || errno == EINPROGRESS) {
        m_connecting = true;
        watchWrites(true);
        return true;
    }
    const int32_t error = fromErrno(errno);
    if (error == AddressNotAvailable && raiseToCaller) throw SocketError(error, "UniSock.ConnectIP");
    report(SockState::Error, error, "ConnectIP");
    return false;
}

void UniSock::readable() {
    if (m_listening) acceptWaiting();
    else if (isUdp()) readUdp();
    else readTcp();
}

void UniSock::readTcp() {
    if (m_received.size() - m_receivedCount < m_receiveChunk) m_received.resize(m_receivedCount + 2 * m_receiveChunk);
    const ssize_t count = ::recv(m_fd, m_received.data() + m_receivedCount, m_receiveChunk, 0);
    const int error = errno;
    if (count > 0) m_receivedCount += static_cast<size_t>(count);
    const auto alive = m_alive;
    if (count == 0) {
        raise(events.closing);
        if (*alive) closeSocket();
        return;
    }
    if (count < 0) {
        if (error == EAGAIN || error == EINTR) return;
        // The connection is dead: watching it on would only repeat this.
        m_readWatch.reset();
        m_writeWatch.reset();
        report(SockState::Error, fromErrno(error), "WndProc");
        return;
    }
    if (isText()) lineStep();
    else raise(events.dataArrival, static_cast<int32_t>(count));
}

void UniSock::lineStep() {
    const auto alive = m_alive;
    const int fd = m_fd;
    std::string text = m_received.substr(0, m_receivedCount);
    const std::vector<Line> lines = cutLines(text);
    text.copy(m_received.data(), text.size());
    m_receivedCount = text.size();
    for (const Line& cut : lines) {
        std::string line = cut.text;
        raise(events.textArrival, line, cut.kind, cut.raw);
        if (!*alive || m_fd != fd) return;
    }
}

void UniSock::readUdp() {
    const int fd = m_fd;
    int available = 0;
    if (::ioctl(fd, FIONREAD, &available) != 0) available = 0;
    const auto alive = m_alive;
    m_datagramTaken = false;
    if (available > 0) raise(events.dataArrival, static_cast<int32_t>(available));
    // A datagram the handler left would wake every turn: it is dropped.
    if (*alive && m_fd == fd && !m_datagramTaken) {
        char scratch;
        ::recv(fd, &scratch, 1, MSG_DONTWAIT);
    }
}

void UniSock::acceptWaiting() {
    sockaddr_in peer{};
    socklen_t length = sizeof peer;
    const int fd = ::accept4(m_fd, reinterpret_cast<sockaddr*>(&peer), &length, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0) {
        if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) report(SockState::Error, fromErrno(errno), "WndProc");
        return;
    }
    if (m_waiting) ::close(m_waiting->fd);
    m_waiting = std::make_unique<Waiting>(Waiting{fd, peer});
    const auto alive = m_alive;
    raise(events.connectionRequest, m_id);
    if (!*alive) return;
    // No one took it.
    if (m_waiting) ::close(m_waiting->fd);
    m_waiting.reset();
}

bool UniSock::accept(int32_t requestId) {
    if (m_state != SockState::Closed || requestId == 0) throw SocketError(InvalidOperation, "UniSock.Accept");
    const auto found = liveObjects().find(requestId);
    if (found == liveObjects().end()) throw SocketError(BadArgument, "UniSock.Accept");
    UniSock& listener = *found->second;
    if (!listener.m_waiting) throw SocketError(InvalidOperation, "UniSock.Accept");
    closeQuietly();
    const Waiting waiting = *listener.m_waiting;
    listener.m_waiting.reset();
    m_fd = waiting.fd;
    m_protocol = Protocol::Tcp;
    m_receiveChunk = optionSize(m_fd, SO_RCVBUF);
    m_sendChunk = optionSize(m_fd, SO_SNDBUF);
    sockaddr_in local{};
    socklen_t length = sizeof local;
    if (::getsockname(m_fd, reinterpret_cast<sockaddr*>(&local), &length) == 0) {
        m_localIp = local.sin_addr;
        m_boundPort = ntohs(local.sin_port);
    }
    // The address, not a reverse look-up that could hold up the loop.
    m_remoteHost = dotted(waiting.address.sin_addr);
    m_remoteIp = waiting.address.sin_addr;
    m_remotePort = ntohs(waiting.address.sin_port);
    // What the peer sent before is still in the socket: the watch reads it
    // in the next turn, after Connect.
    watch();
    const auto alive = m_alive;
    report(SockState::Connected);
    if (*alive && m_fd == waiting.fd) raise(events.connect);
    return true;
}

void UniSock::writable() {
    if (!m_connecting) {
        sendStep();
        return;
    }
    m_connecting = false;
    int error = 0;
    socklen_t length = sizeof error;
    if (::getsockopt(m_fd, SOL_SOCKET, SO_ERROR, &error, &length) != 0) error = errno;
    if (error != 0) {
        m_writeWatch.reset();
        report(SockState::Error, fromErrno(error), "WndProc");
        return;
    }
    if (m_toSend.empty()) m_writeWatch.reset();
    connected();
}

void UniSock::connected() {
    sockaddr_in peer{};
    socklen_t length = sizeof peer;
    if (::getpeername(m_fd, reinterpret_cast<sockaddr*>(&peer), &length) != 0) {
        report(SockState::Error, fromErrno(errno), "WndProc");
        return;
    }
    m_remoteIp = peer.sin_addr;
    m_remotePort = ntohs(peer.sin_port);
    sockaddr_in local{};
    length = sizeof local;
    if (::getsockname(m_fd, reinterpret_cast<sockaddr*>(&local), &length) == 0) {
        m_localIp = local.sin_addr;
        m_boundPort = ntohs(local.sin_port);
    }
    watch();
    const auto alive = m_alive;
    const int fd = m_fd;
    report(SockState::Connected);
    if (*alive && m_fd == fd) raise(events.connect);
}

bool UniSock::closeSocket() {
    if (m_closing || (m_fd < 0 && m_state == SockState::Closed && !m_pendingLookup)) return false;
    m_closing = true;
    const auto alive = m_alive;
    report(SockState::Closing);
    if (!*alive) return false;
    closeQuietly();
    m_closing = false;
    report(SockState::Closed);
    return true;
}

bool UniSock::sendData(const Value& data) {
    if (!isUdp() && m_state != SockState::Connected) throw SocketError(WrongState, "UniSock.SendData");
    const VarType element = data.element();
    std::string bytes;
    if (element == VarType::String && data.isArray()) {
        for (const std::string& text : data.texts) bytes += text;
    } else if (element == VarType::String || elementSize(element) != 0) {
        bytes = data.bytes;
    } else {
        throw SocketError(UnsupportedType, "UniSock.SendData");
    }
    if (isUdp() && m_state != SockState::Open && !connect()) return false;
    return queue(bytes);
}

bool UniSock::sendText(const std::string& text, int32_t format) {
    if (!isUdp() && m_state != SockState::Connected) throw SocketError(WrongState, "UniSock.SendText");
    // Texts are UTF-8 byte strings already: both the converted and the
    // unconverted form are their bytes.
    const std::string bytes = format == 0 || format == 1 ? text + m_lineEnd : toUtf16(text + m_lineEnd);
    if (isUdp() && m_state != SockState::Open && !connect()) return false;
    return queue(bytes);
}

bool UniSock::queue(const std::string& bytes) {
    if (bytes.empty() || m_fd < 0) return false;
    if (m_toSend.capacity() - m_toSend.size() < bytes.size()) m_toSend.reserve(2 * (m_toSend.size() + bytes.size()));
    m_toSend += bytes;
    // Behind a connection still coming up, or output that would block, the
    // bytes wait for the write event.
    if (!m_connecting && !m_writeWatch) sendStep();
    else if (isUdp()) sendStep();
    return true;
}

void UniSock::sendStep() {
    if (isUdp()) {
        in_addr address{};
        const std::string bytes = std::move(m_toSend);
        m_toSend.clear();
        if (!addressOf(m_remoteHost, address)) {
            report(SockState::Error, HostNotFound, "SendData");
            return;
        }
        const sockaddr_in where = endpoint(address, m_remotePort);
        if (::sendto(m_fd, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&where), sizeof where) < 0)
            report(SockState::Error, fromErrno(errno), "SendData");
        return;
    }
    size_t sent = 0;
    while (sent < m_toSend.size()) {
        const size_t length = std::min(m_sendChunk, m_toSend.size() - sent);
        const ssize_t count = ::send(m_fd, m_toSend.data() + sent, length, MSG_NOSIGNAL);
        const int error = errno;
        if (count < 0 && error == EINTR) continue;
        if (count < 0 && error != EAGAIN) {
            m_toSend.clear();
            m_writeWatch.reset();
            report(SockState::Error, fromErrno(error), "SendData");
            return;
        }
        if (count > 0) sent += static_cast<size_t>(count);
        if (count < 0 || static_cast<size_t>(count) < length) {
            // The socket is full: the rest goes at the next write event.
            m_toSend.erase(0, sent);
            watchWrites(true);
            raise(events.sendProgress, static_cast<int32_t>(sent), static_cast<int32_t>(m_toSend.size()));
            return;
        }
    }
    const auto total = static_cast<int32_t>(m_toSend.size());
    m_toSend.clear();
    m_writeWatch.reset();
    const auto alive = m_alive;
    raise(events.sendProgress, total, 0);
    if (*alive) raise(events.sendComplete);
}

bool UniSock::getData(Value& data, int32_t varType, int32_t maxLen) { return takeData(data, varType, maxLen, false); }

bool UniSock::peekData(Value& data, int32_t varType, int32_t maxLen) { return takeData(data, varType, maxLen, true); }

bool UniSock::takeData(Value& data, int32_t varType, int32_t maxLen, bool peek) {
    if (data.type != 0) varType = data.type;
    if (varType == 0) varType = static_cast<int32_t>(VarType::String);
    const auto element = static_cast<VarType>(varType & ~kArray);
    const bool array = (varType & kArray) != 0;
    const size_t size = elementSize(element);
    if (element != VarType::String && size == 0) throw SocketError(UnsupportedType, "UniSock.GetData");

    std::string datagram;
    std::string_view source;
    if (!isUdp() && m_state == SockState::Connected && !isText()) {
        source = std::string_view(m_received.data(), m_receivedCount);
    } else if (isUdp() && m_state == SockState::Open) {
        int available = 0;
        if (::ioctl(m_fd, FIONREAD, &available) != 0) available = 0;
        datagram.resize(static_cast<size_t>(available));
        const ssize_t count = ::recv(m_fd, datagram.data(), datagram.size(), peek ? MSG_PEEK : 0);
        datagram.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
        if (!peek && count >= 0) m_datagramTaken = true;
        source = datagram;
    } else {
        throw SocketError(WrongState, "UniSock.GetData");
    }
    size_t length = source.size();
    if (maxLen >= 1 && static_cast<size_t>(maxLen) < length) length = static_cast<size_t>(maxLen);
    if (length == 0) return false;

    size_t taken = length;
    Value result{varType, {}, {}};
    if (element == VarType::String && array) {
        std::string_view rest = source.substr(0, length);
        std::string_view end = "\r\n";
        for (std::string_view candidate : {"\r\n", "\n", "\r"})
            if (rest.find(candidate) != std::string_view::npos) {
                end = candidate;
                break;
            }
        for (size_t at; (at = rest.find(end)) != std::string_view::npos; rest.remove_prefix(at + end.size()))
            result.texts.emplace_back(rest.substr(0, at));
        result.texts.emplace_back(rest);
    } else if (element == VarType::String) {
        result.bytes = source.substr(0, length);
    } else {
        taken = array ? length / size * size : std::min(size, length);
        result.bytes = source.substr(0, taken);
    }
    data = std::move(result);
    if (!peek && !isUdp()) {
        // From the front by copying: one large read is cheaper than many small.
        std::memmove(m_received.data(), m_received.data() + taken, m_receivedCount - taken);
        m_receivedCount -= taken;
    }
    return true;
}

int32_t UniSock::bytesReceived() const {
    if (!isUdp()) return static_cast<int32_t>(m_receivedCount);
    int available = 0;
    return m_fd >= 0 && ::ioctl(m_fd, FIONREAD, &available) == 0 ? available : 0;
}

std::string UniSock::localHostname() const {
    char name[256] = {};
    if (::gethostname(name, sizeof name - 1) != 0) return {};
    return name;
}

std::string UniSock::localIp() const {
    if (m_state == SockState::Open) return dotted(m_localIp);
    in_addr address{};
    return addressOf(localHostname(), address) ? dotted(address) : std::string();
}

std::string UniSock::remoteHostIp() const { return dotted(m_remoteIp); }

std::string UniSock::requestHost() const {
    if (!m_waiting) return {};
    char name[256] = {};
    if (::getnameinfo(reinterpret_cast<const sockaddr*>(&m_waiting->address), sizeof m_waiting->address, name, sizeof name,
                      nullptr, 0, 0) != 0)
        return {};
    return name;
}

std::string UniSock::requestIp() const { return m_waiting ? dotted(m_waiting->address.sin_addr) : std::string(); }

int32_t UniSock::requestPort() const { return m_waiting ? ntohs(m_waiting->address.sin_port) : 0; }

void UniSock::setLineChange(int32_t kind) {
    static const std::string kEnds[] = {std::string(1, '\0'), "\r\n", "\n", "\r"};
    if (kind < 0 || kind > 3) throw SocketError(BadArgument, "UniSock.LineChange");
    m_lineKind = static_cast<LineChange>(kind);
    m_lineEnd = kEnds[kind];
}

void UniSock::setLocalPort(int32_t port) {
    if (m_state != SockState::Closed) throw SocketError(InvalidOperation, "UniSock.LocalPort");
    if (port < 0 || port > 65535) throw SocketError(BadArgument, "UniSock.LocalPort");
    m_localPort = port;
}

void UniSock::setProtocol(int32_t protocol) {
    if (m_state != SockState::Closed) throw SocketError(InvalidOperation, "UniSock.Protocol");
    m_protocol = protocol == 0 ? Protocol::Tcp : Protocol::Udp;
}

void UniSock::setRemoteHost(const std::string& host) {
    if (m_state != SockState::Closed && !isUdp()) throw SocketError(InvalidOperation, "UniSock.RemoteHost");
    m_remoteHost = host;
}

void UniSock::setRemotePort(int32_t port) {
    if (m_state != SockState::Closed && !isUdp()) throw SocketError(InvalidOperation, "UniSock.RemotePort");
    if (port < 0 || port > 65535) throw SocketError(BadArgument, "UniSock.RemotePort");
    m_remotePort = port;
}

void UniSock::report(SockState state, int32_t number, std::string source, std::string description) {
    const auto alive = m_alive;
    if (state != SockState::Error) m_state = state;
    raise(events.statusChange, static_cast<int32_t>(state));
    if (!*alive || number == 0) return;
    ErrorEvent error{number, description.empty() ? std::string(errorText(number)) : std::move(description), 0,
                     source.empty() ? "UniSock" : "UniSock." + source, {}, 0, true};
    raise(events.error, error);
    if (*alive && !error.cancelDisplay && m_boxes) m_boxes->show(48, error.source, error.description);
}

}  // namespace tarvoke::net
