// Loopback throughput of the socket class: one object sends with SendData in
// 64 KB chunks, a second one takes the connection with Accept and reads every
// DataArrival with GetData, both on one poll loop in one thread.
// Usage: tarvoke_net_bench [MEGABYTES]; prints MB/s.

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "net/unisock.h"
#include "platform/loop/pollloop.h"

using namespace tarvoke;

int main(int argc, char** argv) {
    const size_t total = (argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1024) << 20;
    const net::Value chunk = net::Value::numbers<uint8_t>(net::VarType::Byte, std::vector<uint8_t>(64 << 10, 'x'));
    platform::PollLoop loop;
    net::UniSock listener(loop), receiver(loop), sender(loop);
    listener.bind(0, "127.0.0.1");
    listener.listen();
    listener.events.connectionRequest = [&](int32_t id) { receiver.accept(id); };
    size_t received = 0, queued = 0;
    net::Value data;
    receiver.events.dataArrival = [&](int32_t) {
        data.type = 0;
        if (receiver.getData(data, static_cast<int32_t>(net::VarType::Byte) | net::kArray)) received += data.bytes.size();
    };
    const auto sendMore = [&] {
        if (queued >= total) return;
        queued += chunk.bytes.size();
        sender.sendData(chunk);
    };
    sender.events.connect = sendMore;
    sender.events.sendComplete = sendMore;
    const auto begin = std::chrono::steady_clock::now();
    sender.connect("127.0.0.1", listener.localPort());
    while (received < total) loop.turn(true);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    std::printf("%.0f\n", static_cast<double>(total) / (1 << 20) / seconds);
}
