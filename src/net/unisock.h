#pragma once
// UniSock: a TCP or UDP socket as an object with properties, methods and
// events. It never blocks and starts no thread: its non-blocking socket is
// watched by the event loop it is given (Qt's in the windows, the poll loop in
// the tools), host names are looked up asynchronously, and every event is
// raised from the loop's turn on the one thread. A handler may call back into
// the object, close it, or destroy it.
//
// Failures have two channels. What goes wrong on the network is reported as
// state 9 through StatusChange and Error, and the stored state stays as it
// was: a caller that gives up calls closeSocket(). Misuse (a wrong state, a bad
// argument) throws SocketError with a number from 40006.

#include <netinet/in.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "net/hostlookup.h"
#include "net/sockerrors.h"
#include "net/value.h"
#include "platform/eventloop.h"

namespace tarvoke::platform {
class MessageBoxes;
}

namespace tarvoke::net {

enum class SockState : int32_t {
    Closed = 0,
    Open = 1,  // bound, UDP ready, or listening
    LookingUp = 4,
    HostFound = 5,
    Connecting = 6,
    Connected = 7,
    Closing = 8,
    Error = 9,  // reported only, never stored
};

enum class Protocol : int32_t { Tcp = 0, Udp = 1 };
enum class LineChange : int32_t { None = 0, CrLf = 1, Lf = 2, Cr = 3 };
// How sendText encodes: UTF-8, the bytes as they are, or UTF-16.
enum class TextFormat : int32_t { Utf8 = 0, Unconverted = 1, Utf16 = 2 };

struct ErrorEvent {
    int32_t number = 0;
    std::string description;
    int32_t code = 0;
    std::string source;
    std::string helpFile;
    int32_t helpContext = 0;
    // A handler that clears it asks for a message box.
    bool cancelDisplay = true;
};

class UniSock {
public:
    // The events, in the class's order; any may be left empty.
    struct Events {
        std::function<void()> closing;
        std::function<void()> connect;
        std::function<void(int32_t requestId)> connectionRequest;
        std::function<void(int32_t bytesTotal)> dataArrival;
        std::function<void(ErrorEvent&)> error;
        std::function<void()> sendComplete;
        std::function<void(int32_t bytesSent, int32_t bytesRemaining)> sendProgress;
        std::function<void(int32_t state)> statusChange;
        std::function<void(std::string& text, int32_t lineChange, bool raw)> textArrival;
    };

    // lookup: the system's resolver when null. boxes: where an Error whose
    // handler cleared cancelDisplay is shown; nowhere when null.
    explicit UniSock(platform::EventLoop& loop, HostLookup* lookup = nullptr, platform::MessageBoxes* boxes = nullptr);
    ~UniSock();
    UniSock(const UniSock&) = delete;
    UniSock& operator=(const UniSock&) = delete;

    Events events;

    bool accept(int32_t requestId);
    bool bind(int32_t localPort = 0, const std::string& localIp = {});
    int32_t bytesReceived() const;
    bool closeSocket();
    bool connect(const std::string& remoteHost = {}, int32_t remotePort = 0);
    // Fills data with what has arrived; its type, if it has one, decides the
    // conversion, else varType does (text when that is 0 too). maxLen from 1
    // takes at most that many bytes.
    bool getData(Value& data, int32_t varType = 0, int32_t maxLen = 0);
    bool peekData(Value& data, int32_t varType = 0, int32_t maxLen = 0);
    bool listen();
    std::string localHostname() const;
    std::string localIp() const;
    bool sendData(const Value& data);
    bool sendText(const std::string& text, int32_t format = 0);
    int32_t socketHandle() const { return m_fd; }
    int32_t state() const { return static_cast<int32_t>(m_state); }
    std::string remoteHostIp() const;
    int32_t remoteIp() const { return static_cast<int32_t>(m_remoteIp.s_addr); }
    // The connection waiting for accept(); valid inside ConnectionRequest.
    std::string requestHost() const;
    std::string requestIp() const;
    int32_t requestPort() const;

    int32_t lineChange() const { return static_cast<int32_t>(m_lineKind); }
    void setLineChange(int32_t kind);
    int32_t localPort() const { return m_boundPort != 0 ? m_boundPort : m_localPort; }
    void setLocalPort(int32_t port);
    int32_t mode() const { return m_mode; }
    void setMode(int32_t mode) { m_mode = mode; }
    int32_t protocol() const { return static_cast<int32_t>(m_protocol); }
    void setProtocol(int32_t protocol);
    const std::string& remoteHost() const { return m_remoteHost; }
    void setRemoteHost(const std::string& host);
    int32_t remotePort() const { return m_remotePort; }
    void setRemotePort(int32_t port);

private:
    struct Waiting;

    bool makeSocket();
    bool bindSteps(int32_t port, const std::string& address);
    bool connectIp(in_addr address, bool raiseToCaller);
    void watch();
    void watchWrites(bool on);
    void readable();
    void writable();
    void readTcp();
    void readUdp();
    void acceptWaiting();
    void connected();
    void lineStep();
    void sendStep();
    bool queue(const std::string& bytes);
    bool takeData(Value& data, int32_t varType, int32_t maxLen, bool peek);
    void report(SockState state, int32_t number = 0, std::string source = {}, std::string description = {});
    void closeQuietly();
    bool isText() const { return m_mode != 0; }
    bool isUdp() const { return m_protocol == Protocol::Udp; }

    platform::EventLoop& m_loop;
    std::unique_ptr<HostLookup> m_ownLookup;
    HostLookup* m_lookup;
    platform::MessageBoxes* m_boxes;
    int32_t m_id;
    // Cleared when the object ends, so that code after an event can tell.
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);

    int m_fd = -1;
    SockState m_state = SockState::Closed;
    Protocol m_protocol = Protocol::Tcp;
    int32_t m_mode = 0;
    LineChange m_lineKind = LineChange::CrLf;
    std::string m_lineEnd = "\r\n";
    std::string m_remoteHost;
    in_addr m_remoteIp{};
    int32_t m_remotePort = 80;
    in_addr m_localIp{};
    int32_t m_localPort = 0;
    int32_t m_boundPort = 0;
    bool m_bound = false;
    bool m_listening = false;
    // A connect() in progress: the first write event tells how it ended.
    bool m_connecting = false;
    bool m_closing = false;
    // The first m_receivedCount bytes are valid; the room behind them is kept,
    // so that small reads do not reallocate.
    std::string m_received;
    size_t m_receivedCount = 0;
    std::string m_toSend;
    size_t m_receiveChunk = 4096;
    size_t m_sendChunk = 4096;
    // Set while a UDP DataArrival runs when its handler takes the datagram.
    bool m_datagramTaken = false;
    std::unique_ptr<Waiting> m_waiting;
    HostLookup::Pending m_pendingLookup;
    std::unique_ptr<platform::EventLoop::Handle> m_readWatch;
    std::unique_ptr<platform::EventLoop::Handle> m_writeWatch;
};

}  // namespace tarvoke::net
