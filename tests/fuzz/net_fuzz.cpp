// libFuzzer target of what the network reads: any bytes through a loopback
// connection into a text-mode socket, and through the update check's judge.

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "net/textlines.h"
#include "net/updatecheck.h"
#include "platform/loop/pollloop.h"

namespace {
using namespace tarvoke;

struct Connection {
    platform::PollLoop loop;
    net::UniSock listener{loop}, reader{loop};
    int writer = -1;
    Connection() {
        listener.bind(0, "127.0.0.1");
        listener.listen();
        listener.events.connectionRequest = [this](int32_t id) { reader.accept(id); };
        reader.setMode(1);
        reader.events.textArrival = [](std::string& text, int32_t, bool raw) {
            if (!raw && !text.empty() && !net::looksLikeUtf8(text)) std::abort();
        };
        writer = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in where{AF_INET, htons(static_cast<uint16_t>(listener.localPort())), {htonl(INADDR_LOOPBACK)}, {}};
        if (::connect(writer, reinterpret_cast<sockaddr*>(&where), sizeof where) != 0) std::abort();
        while (reader.state() != 7) loop.turn(true);
    }
    void deliver(const std::string& bytes) {
        if (::send(writer, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) std::abort();
        for (pollfd fd{reader.socketHandle(), POLLIN, 0}; ::poll(&fd, 1, 0) > 0; fd.revents = 0) loop.turn(false);
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    static Connection connection;
    if (!bytes.empty()) connection.deliver(bytes);
    // What an input leaves without a line end stays for the next ones.
    if (connection.reader.bytesReceived() > (1 << 20)) connection.deliver("\r\n");

    std::string buffer = bytes;
    std::string again;
    const std::vector<net::Line> lines = net::cutLines(buffer);
    static constexpr const char* kEnds[] = {"", "\r\n", "\n", "\r"};
    for (const net::Line& line : lines) again += line.text + kEnds[line.kind];
    if (bytes.find('\0') == std::string::npos && again + buffer != bytes) std::abort();

    (void)net::announcesUpdate(bytes), (void)net::fromUtf16(net::toUtf16(bytes));
    return 0;
}
