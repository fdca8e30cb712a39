// The socket class and the update check, on the poll loop with real sockets
// on loopback. Servers that misbehave are plain sockets of the test.

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "net/textlines.h"
#include "net/updatecheck.h"
#include "platform/loop/pollloop.h"
#include "platform/loop/qtloop.h"
#include <QCoreApplication>

namespace tarvoke::test {
namespace {

using namespace net;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Handle = std::unique_ptr<platform::EventLoop::Handle>;

class NetTest : public ::testing::Test {
protected:
    ~NetTest() override {
        for (int fd : peers) ::close(fd);
        stopServing();
    }
    void stopServing() {
        if (listener >= 0) ::close(listener);
        listener = -1;
    }

    // A TCP socket bound to a free port of 127.0.0.1.
    static int boundSocket(uint16_t& port) {
        const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        sockaddr_in where{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
        socklen_t length = sizeof where;
        EXPECT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&where), length), 0);
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&where), &length);
        port = ntohs(where.sin_port);
        return fd;
    }
    // A listening socket; onAccept gets each connection.
    uint16_t serve(std::function<void(int)> onAccept = {}) {
        uint16_t port;
        listener = boundSocket(port);
        ::listen(listener, 64);
        accepting = loop.watchReadable(listener, [this, onAccept] {
            const int fd = ::accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
            if (fd >= 0) peers.push_back(fd);
            if (fd >= 0 && onAccept) onAccept(fd);
        });
        return port;
    }
    // A port where nothing listens.
    static uint16_t closedPort() {
        uint16_t port;
        ::close(boundSocket(port));
        return port;
    }
    static std::string readAll(int fd) {
        std::string text;
        char chunk[65536];
        for (ssize_t n; (n = ::recv(fd, chunk, sizeof chunk, 0)) > 0;) text.append(chunk, static_cast<size_t>(n));
        return text;
    }
    // Turns the loop (the test's poll loop unless told) until done; false
    // after a generous liveness bound.
    bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds bound = 5s, platform::EventLoop* on = nullptr) {
        platform::EventLoop& turning = on ? *on : loop;
        const Handle tick = turning.every(10ms, [] {});
        const auto end = Clock::now() + bound;
        while (!done())
            if (Clock::now() > end) return false;
            else turning.turn(true);
        return true;
    }

    platform::PollLoop loop;
    int listener = -1;
    std::vector<int> peers;
    Handle accepting;
};

// A look-up that answers as told, or never.
struct ScriptedLookup : HostLookup {
    platform::EventLoop* loop;
    std::optional<int32_t> error;  // none: never answers
    ScriptedLookup(platform::EventLoop& on, std::optional<int32_t> answer = {}) : loop(&on), error(answer) {}
    Pending start(const std::string&, Done done) override {
        struct Answer : platform::EventLoop::Handle {
            std::unique_ptr<platform::EventLoop::Handle> hook;
        };
        auto answer = std::make_unique<Answer>();
        if (error)
            answer->hook = loop->beforeEachTurn([hook = &answer->hook, done, error = *error] {
                hook->reset();
                done(in_addr{}, error);
            });
        return answer;
    }
};

size_t openDescriptors() {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

// A closed connection leaves no descriptor open, also after a look-up of a
// name through the system's resolver.
TEST_F(NetTest, StatesComeInOrderForAnAddressAndForAName) {
    const uint16_t port = serve();
    const size_t before = openDescriptors();
    for (const auto& [host, expected] : {std::pair<std::string, std::vector<int32_t>>{"127.0.0.1", {6, 7}},
                                         {"localhost", {4, 5, 6, 7}}}) {
        UniSock sock(loop);
        std::vector<int32_t> states;
        sock.events.statusChange = [&](int32_t state) { states.push_back(state); };
        sock.setRemotePort(port);
        // Ports out of range keep the stored one.
        EXPECT_TRUE(sock.connect(host, host == "localhost" ? 0 : 70000));
        ASSERT_TRUE(runUntil([&] { return sock.state() == 7; })) << host;
        EXPECT_EQ(states, expected) << host;
        EXPECT_EQ(sock.remoteHostIp(), "127.0.0.1");
        EXPECT_EQ(sock.remotePort(), port);
        EXPECT_TRUE(sock.closeSocket());
        EXPECT_EQ(states.back(), 0);
        EXPECT_FALSE(sock.closeSocket());
        // The server's ends of the connections stay open in peers.
        ASSERT_TRUE(runUntil([&] { return openDescriptors() == before + peers.size(); })) << host;
    }
}

TEST_F(NetTest, FailuresAreReportedAsStateNineAndLeaveTheState) {
    struct Case {
        std::string host;
        std::optional<int32_t> lookupError;
        int32_t number;
        int32_t stateAfter;
        std::string source;
    };
    const uint16_t refused = closedPort();
    for (const Case& c : {Case{"127.0.0.1", {}, 10061, 6, "UniSock.WndProc"},
                          Case{"nowhere.test", 11001, 11001, 4, "UniSock.WndProc"},
                          Case{"", {}, 0, 0, ""}}) {
        ScriptedLookup lookup(loop, c.lookupError);
        UniSock sock(loop, &lookup);
        std::vector<ErrorEvent> errors;
        bool nine = false;
        sock.events.statusChange = [&](int32_t state) { nine |= state == 9; };
        sock.events.error = [&](ErrorEvent& error) { errors.push_back(error); };
        sock.setRemotePort(refused);
        EXPECT_EQ(sock.connect(c.host), !c.host.empty());
        ASSERT_TRUE(runUntil([&] { return nine; })) << c.host;
        EXPECT_EQ(sock.state(), c.stateAfter) << c.host;
        ASSERT_EQ(errors.size(), c.number ? 1u : 0u) << c.host;
        if (errors.empty()) continue;
        EXPECT_EQ(errors[0].number, c.number);
        EXPECT_EQ(errors[0].description, errorText(c.number));
        EXPECT_EQ(errors[0].source, c.source);
        EXPECT_TRUE(errors[0].cancelDisplay);
    }
}

TEST_F(NetTest, MisuseRaisesTheClassErrors) {
    const uint16_t port = serve();
    UniSock connected(loop);
    connected.connect("127.0.0.1", port);
    ASSERT_TRUE(runUntil([&] { return connected.state() == 7; }));
    UniSock closed(loop);
    const std::vector<std::pair<std::function<void()>, int32_t>> cases = {
        {[&] { closed.sendData(Value::text("x")); }, 40006},
        {[&] { closed.sendText("x"); }, 40006},
        {[&] { Value v; closed.getData(v); }, 40006},
        {[&] { connected.sendData(Value{}); }, 40018},
        {[&] { Value v{99, {}, {}}; connected.getData(v); }, 40018},
        {[&] { closed.setLineChange(4); }, 40014},
        {[&] { closed.setLocalPort(70000); }, 40014},
        {[&] { connected.setLocalPort(1); }, 40020},
        {[&] { connected.setRemoteHost("x"); }, 40020},
        {[&] { connected.setProtocol(1); }, 40020},
        {[&] { connected.listen(); }, 40020},
        {[&] { closed.accept(0); }, 40020},
        {[&] { closed.accept(-5); }, 40014},
        {[&] { connected.setMode(1); Value v; connected.getData(v); }, 40006},
    };
    for (size_t i = 0; i < cases.size(); ++i) {
        try {
            cases[i].first();
            ADD_FAILURE() << "case " << i << " raised nothing";
        } catch (const SocketError& error) {
            EXPECT_EQ(error.number(), cases[i].second) << "case " << i;
            EXPECT_EQ(error.what(), errorText(cases[i].second));
            EXPECT_TRUE(error.source().starts_with("UniSock.")) << error.source();
        }
    }
    EXPECT_EQ(errorText(10061), "Connection refused.");
    EXPECT_EQ(errorText(11031), "Reserved policy QOS element type.");
    EXPECT_EQ(errorText(12345), "");
}

TEST_F(NetTest, TextIsCutAndConvertedByItsLineEnds) {
    struct Case {
        std::string in;
        std::vector<Line> lines;
        std::string rest;
    };
    const std::string wide = toUtf16("h\xC3\xA9\r\nx");
    for (const Case& c : {Case{"a\nb\rc", {{"a", 2, false}}, "b\rc"},
                          Case{"\xFF\xFE\r\r\xC3\xA9\r", {{"\xFF\xFE", 3, false}, {"", 3, true}, {"\xC3\xA9", 3, false}}, ""},
                          Case{"\x80z\n", {{"\x80z", 2, true}}, ""},
                          Case{wide, {{"h\xC3\xA9", 1, false}}, toUtf16("x")}}) {
        std::string buffer = c.in;
        EXPECT_EQ(cutLines(buffer), c.lines) << c.in;
        EXPECT_EQ(buffer, c.rest);
    }
    EXPECT_EQ(fromUtf16(toUtf16("\xF0\x9F\x98\x80 \xE9")), "\xF0\x9F\x98\x80 \xC3\xA9");
}

TEST_F(NetTest, AConnectionIsHandedOverWithItsEarlierDataOrClosed) {
    UniSock server(loop), taker(loop);
    server.bind(0, "127.0.0.1");
    ASSERT_TRUE(server.listen());
    bool take = false;
    int requests = 0;
    server.events.connectionRequest = [&](int32_t id) {
        ++requests;
        EXPECT_EQ(server.requestIp(), "127.0.0.1");
        if (take) {
            EXPECT_TRUE(taker.accept(id));
        }
    };
    std::string data;
    bool connected = false;
    taker.events.connect = [&] { connected = true; };
    taker.events.dataArrival = [&](int32_t) {
        Value v = Value::text({});
        taker.getData(v);
        data += v.bytes;
    };
    for (bool accepting : {false, true}) {
        take = accepting;
        const int client = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in where{AF_INET, htons(static_cast<uint16_t>(server.localPort())), {htonl(INADDR_LOOPBACK)}, {}};
        ASSERT_EQ(::connect(client, reinterpret_cast<sockaddr*>(&where), sizeof where), 0);
        ::send(client, "early", 5, 0);
        ASSERT_TRUE(runUntil([&] { return requests == (accepting ? 2 : 1); }));
        if (!accepting) {
            char byte;
            // Closed with "early" unread: a reset rather than an end.
            EXPECT_LE(::recv(client, &byte, 1, 0), 0) << "a request left alone is closed";
        } else {
            ASSERT_TRUE(runUntil([&] { return data == "early"; }));
            EXPECT_TRUE(connected);
            EXPECT_EQ(taker.state(), 7);
            taker.sendText("back");
            char reply[6] = {};
            EXPECT_EQ(::recv(client, reply, 6, MSG_WAITALL), 6);
            EXPECT_EQ(std::string(reply, 6), "back\r\n");
        }
        ::close(client);
    }
    bool closing = false;
    taker.events.closing = [&] { closing = true; };
    ASSERT_TRUE(runUntil([&] { return closing && taker.state() == 0; }));
}

TEST_F(NetTest, DatagramsGoBothWays) {
    UniSock receiver(loop), sender(loop);
    receiver.setProtocol(1);
    sender.setProtocol(1);
    const uint16_t port = closedPort();
    ASSERT_TRUE(receiver.bind(port, "127.0.0.1"));
    EXPECT_EQ(receiver.state(), 1);
    std::vector<std::string> got;
    receiver.events.dataArrival = [&](int32_t bytes) {
        Value v = Value::text({});
        EXPECT_TRUE(receiver.peekData(v));
        EXPECT_TRUE(receiver.getData(v));
        EXPECT_EQ(static_cast<int32_t>(v.bytes.size()), bytes);
        got.push_back(v.bytes);
    };
    sender.setRemoteHost("127.0.0.1");
    sender.setRemotePort(port);
    EXPECT_TRUE(sender.sendData(Value::text("one")));
    EXPECT_TRUE(sender.sendText("two", 2));
    ASSERT_TRUE(runUntil([&] { return got.size() == 2; }));
    EXPECT_EQ(got, (std::vector<std::string>{"one", toUtf16("two\r\n")}));
}

// On Qt's loop, as in the windows: what arrives is read as typed values and
// as text lines, and 100,000 bytes go to a slow reader in rounds, with
// SendProgress and one SendComplete at the end.
TEST_F(NetTest, DataGoesBothWaysOnQtsLoop) {
    int argc = 0;
    QCoreApplication application(argc, nullptr);
    platform::QtLoop qt;
    uint16_t port;
    listener = boundSocket(port);
    const int small = 4096;  // small buffers on both sides, so that the big send cannot fit at once
    ::setsockopt(listener, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    ::listen(listener, 1);
    UniSock sock(qt);
    int arrivals = 0;
    sock.events.dataArrival = [&](int32_t) { ++arrivals; };
    sock.connect("127.0.0.1", port);
    ASSERT_TRUE(runUntil([&] { return sock.state() == 7; }, 5s, &qt));
    const int peer = ::accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    peers.push_back(peer);
    const auto send = [&](std::string_view bytes) { ::send(peer, bytes.data(), bytes.size(), 0); };

    // Binary: two reads are one text; a peek leaves the count.
    send("ab");
    ASSERT_TRUE(runUntil([&] { return arrivals == 1; }, 5s, &qt));
    send("cd\x01\x02\x03\x04\xFF");
    ASSERT_TRUE(runUntil([&] { return arrivals == 2; }, 5s, &qt));
    Value text = Value::text({});
    EXPECT_TRUE(sock.peekData(text, 0, 4));
    EXPECT_EQ(text.bytes, "abcd");
    EXPECT_EQ(sock.bytesReceived(), 9);
    EXPECT_TRUE(sock.getData(text, 0, 4));
    EXPECT_EQ(text.bytes, "abcd");
    Value number;
    EXPECT_TRUE(sock.getData(number, static_cast<int32_t>(VarType::Long)));
    EXPECT_EQ(number.at<int32_t>(), 0x04030201);
    Value bytes;
    EXPECT_TRUE(sock.getData(bytes, static_cast<int32_t>(VarType::Byte) | kArray));
    EXPECT_EQ(bytes.bytes, "\xFF");
    EXPECT_FALSE(sock.getData(bytes));
    send("x\ny\nz");
    ASSERT_TRUE(runUntil([&] { return arrivals == 3; }, 5s, &qt));
    Value lines;
    EXPECT_TRUE(sock.getData(lines, static_cast<int32_t>(VarType::String) | kArray));
    EXPECT_EQ(lines.texts, (std::vector<std::string>{"x", "y", "z"}));

    // The big send: the reader starts only once a send would have blocked.
    int progress = 0, complete = 0, remainingZero = 0;
    sock.events.sendProgress = [&](int32_t, int32_t remaining) { ++progress, remainingZero += remaining == 0; };
    sock.events.sendComplete = [&] { ++complete; };
    ::setsockopt(sock.socketHandle(), SOL_SOCKET, SO_SNDBUF, &small, sizeof small);
    const int on = 1;  // Nagle's wait for delayed acknowledgements would only slow the test
    ::setsockopt(sock.socketHandle(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    std::string sent(100000, '\0');
    for (size_t i = 0; i < sent.size(); ++i) sent[i] = static_cast<char>(i * 7);
    EXPECT_TRUE(sock.sendData(Value::numbers<uint8_t>(VarType::Byte, {sent.begin(), sent.end()})));
    ASSERT_GE(progress, 1);
    EXPECT_EQ(complete, 0);
    std::string received;
    ASSERT_TRUE(runUntil([&] {
        received += readAll(peer);
        return received.size() >= sent.size() && complete > 0;
    }, 5s, &qt));
    EXPECT_GE(progress, 3);
    EXPECT_EQ(complete, 1);
    EXPECT_EQ(remainingZero, 1);
    EXPECT_EQ(received, sent);

    // Text: nothing until a line end; one kind of line end cuts a read.
    sock.setMode(1);
    std::vector<std::tuple<std::string, int32_t, bool>> got;
    sock.events.textArrival = [&](std::string& line, int32_t kind, bool raw) { got.emplace_back(line, kind, raw); };
    send("abc");
    ASSERT_TRUE(runUntil([&] { return sock.bytesReceived() == 3; }, 5s, &qt));
    EXPECT_TRUE(got.empty());
    send("\r\n");
    ASSERT_TRUE(runUntil([&] { return got.size() == 1; }, 5s, &qt));
    send("a\r\nb\n");
    ASSERT_TRUE(runUntil([&] { return got.size() == 2; }, 5s, &qt));
    EXPECT_EQ(sock.bytesReceived(), 2);
    EXPECT_EQ(got, (decltype(got){{"abc", 1, false}, {"a", 1, false}}));
}

// The update check against servers of every kind. The splash's one-second
// timer is played by the loop, as the windows' timer does it.
TEST_F(NetTest, TheUpdateCheckAsksOnlyForAReplyEndingInYes) {
    struct Case {
        std::vector<std::string> pieces;  // each sent once the check judged the one before
        bool asks;
    };
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\n";
    for (const Case& c : {Case{{head + "Yes"}, true}, Case{{"  Yes  "}, true}, Case{{head + "yes"}, false},
                          Case{{head + "Yes."}, false}, Case{{head + "Yes\r\n"}, false}, Case{{head + "YES"}, false},
                          Case{{head + "No", "Yes"}, true}}) {
        std::string request;
        int peer = -1;
        size_t next = 0;
        const uint16_t port = serve([&](int fd) { peer = fd; });
        int wentOn = 0, asked = 0;
        std::string opened;
        UpdateCheck check(loop, {"127.0.0.1", port, "9.8.7"},
                          {[&] { ++wentOn; },
                           [&] {
                               check.timeUp();  // the splash's second runs out under the question
                               return ++asked, true;
                           },
                           [&](const std::string& a) { opened = a; }});
        check.start();
        const Handle reader = loop.beforeEachTurn([&] {
            if (peer < 0) return;
            request += readAll(peer);
            // The next piece only after the check has judged the one before.
            if (request.ends_with("\r\n\r\n") && next < c.pieces.size() && (next == 0 || wentOn == 1)) {
                ::send(peer, c.pieces[next].data(), c.pieces[next].size(), 0);
                ++next;
            }
        });
        ASSERT_TRUE(runUntil([&] { return asked == 1 || (next == c.pieces.size() && wentOn == 1); })) << c.pieces.back();
        EXPECT_EQ(asked, c.asks ? 1 : 0) << c.pieces.back();
        EXPECT_EQ(wentOn, c.asks && c.pieces.size() == 1 ? 0 : 1) << c.pieces.back();
        EXPECT_EQ(opened, c.asks ? "http://127.0.0.1:" + std::to_string(port) + "/downloads/Tarvokesetup.exe" : "");
        EXPECT_EQ(request, "GET /tarvokeupdate.php?currversion=9.8.7 HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        stopServing();
    }
    EXPECT_EQ(downloadAddress({"up date.example", 80, ""}), "http://up%20date.example/downloads/Tarvokesetup.exe");
}

long residentKb() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.starts_with("VmRSS:")) return std::stol(line.substr(6));
    return 0;
}

TEST_F(NetTest, NoServerHoldsUpTheStartOrItsMemory) {
    enum Kind { None, Refused, UnknownHost, HangingLookup, Silent, ClosesAtOnce, Trickles, Floods };
    for (int kind = None; kind <= Floods; ++kind) {
        Handle pump, trickle;
        size_t flooded = 0;
        const std::string block(1 << 16, 'N');
        const uint16_t port = kind < Silent ? closedPort() : serve([&](int fd) {
            if (kind == ClosesAtOnce) ::shutdown(fd, SHUT_RDWR);
            if (kind == Trickles) trickle = loop.every(1s, [fd] { ::send(fd, "N", 1, MSG_NOSIGNAL); }), ::send(fd, "N", 1, 0);
            if (kind == Floods)
                pump = loop.watchWritable(fd, [&, fd] {
                    const ssize_t n = ::send(fd, block.data(), block.size(), MSG_NOSIGNAL);
                    if (n > 0) flooded += static_cast<size_t>(n);
                    if (n < 0 || flooded >= 100'000'000) pump.reset();
                });
        });
        ScriptedLookup lookup(loop, kind == UnknownHost ? std::optional(11001) : std::nullopt);
        const bool byName = kind == UnknownHost || kind == HangingLookup;
        const UpdateServer server{kind == None ? "" : byName ? "update.test" : "127.0.0.1", port, "1"};
        bool started = false;
        int asked = 0;
        UpdateCheck check(loop, server, {[&] { started = true; }, [&] { return ++asked, false; }, {}}, &lookup);
        const long memoryBefore = residentKb();
        const auto begin = Clock::now();
        check.start();
        const Handle splashTimer = loop.every(1s, [&] { check.timeUp(); });
        ASSERT_TRUE(runUntil([&] { return started; }, 3s)) << kind;
        EXPECT_LT(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count(), 1500) << kind;
        if (kind == Floods) {
            // The check stops listening long before the flood ends.
            ASSERT_TRUE(runUntil([&] { return !pump; }));
            EXPECT_LT(flooded, 100'000'000u);
            EXPECT_LT(residentKb() - memoryBefore, 8 * 1024);
        }
        EXPECT_EQ(asked, 0);
        stopServing();
    }
}

}  // namespace
}  // namespace tarvoke::test
