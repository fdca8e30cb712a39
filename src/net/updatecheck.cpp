#include "net/updatecheck.h"

#include <cstdlib>

namespace tarvoke::net {

std::string buildRequest(std::string_view path, std::string_view host) {
    std::string request = "GET /";
    request.append(path).append(" HTTP/1.1\r\nHost: ").append(host).append("\r\n\r\n");
    return request;
}

bool announcesUpdate(std::string_view reply) {
    const size_t first = reply.find_first_not_of(' ');
    if (first == std::string_view::npos) return false;
    reply = reply.substr(first, reply.find_last_not_of(' ') + 1 - first);
    return reply.ends_with("Yes");
}

std::string downloadAddress(const UpdateServer& server) {
    std::string address = "http://" + server.host;
    if (server.port != 80) address += ":" + std::to_string(server.port);
    address += "/downloads/Tarvokesetup.exe";
    for (size_t at; (at = address.find(' ')) != std::string::npos;) address.replace(at, 1, "%20");
    return address;
}

UpdateCheck::UpdateCheck(platform::EventLoop& loop, UpdateServer server, Hooks hooks, HostLookup* lookup)
    : m_socket(loop, lookup), m_server(std::move(server)), m_hooks(std::move(hooks)) {
    // No handler for StatusChange or Error: no network trouble is shown.
    m_socket.events.connect = [this] {
        sendRequest();
        m_connected = true;
    };
    m_socket.events.dataArrival = [this](int32_t) { judge(); };
}

void UpdateCheck::start() {
    if (m_server.host.empty()) return;
    try {
        m_socket.connect(m_server.host, m_server.port);
    } catch (const SocketError&) {
        // An address the system cannot use: the same as no answer.
    }
}

void UpdateCheck::sendRequest() {
    try {
        m_socket.sendData(Value::text(buildRequest("tarvokeupdate.php?currversion=" + m_server.version, m_server.host)));
    } catch (const SocketError&) {
    }
}

// Each arrival is judged by itself: a reply in two pieces is judged twice,
// and the second piece can still bring the question.
void UpdateCheck::judge() {
    Value reply = Value::text({});
    if (!m_socket.getData(reply)) return;
    m_received += reply.bytes.size();
    if (m_asked) return;
    if (announcesUpdate(reply.bytes)) {
        m_asked = true;
        m_socket.closeSocket();
        // The question's own loop runs on: the check has stopped listening.
        m_asking = true;
        const bool update = m_hooks.askToUpdate && m_hooks.askToUpdate();
        m_asking = false;
        if (update) {
            if (m_hooks.openAndQuit) m_hooks.openAndQuit(downloadAddress(m_server));
            return;
        }
        wentOn();
        return;
    }
    wentOn();
    if (m_received > kMostBytes) m_socket.closeSocket();
}

void UpdateCheck::wentOn() {
    if (m_wentOn) return;
    m_wentOn = true;
    if (m_hooks.goOn) m_hooks.goOn();
}

}  // namespace tarvoke::net
