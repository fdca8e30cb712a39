#pragma once
// The update check at start-up: one plain HTTP request to the update server,
// whose reply either ends in "Yes" (a newer version exists) or does not. It
// never shows a failure and never holds up the start: the splash's one-second
// timer carries the start on whatever the network does, and whatever a server
// sends changes nothing but the answer.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "net/unisock.h"

namespace tarvoke::net {

struct UpdateServer {
    std::string host;  // empty: no check at all
    int32_t port = 80;
    std::string version;
};

// The server this build asks: its build settings, with the port taken from
// $TARVOKE_UPDATE_PORT when that is set (for tests against a local server).
UpdateServer configuredServer();

// "GET /" path " HTTP/1.1", "Host: " host, an empty line; CR LF line ends.
std::string buildRequest(std::string_view path, std::string_view host);
// Whether one piece of the reply, blanks trimmed (line ends kept), ends in
// "Yes", case and all.
bool announcesUpdate(std::string_view reply);
// Where the new installer is, ready for the browser (blanks as %20).
std::string downloadAddress(const UpdateServer& server);

class UpdateCheck {
public:
    struct Hooks {
        // The check has its answer, and it is no: on to the start window.
        std::function<void()> goOn;
        // The "Update" question; true when the user wants the update.
        std::function<bool()> askToUpdate;
        // Opens the address in the browser and ends the program.
        std::function<void(const std::string& address)> openAndQuit;
    };

    UpdateCheck(platform::EventLoop& loop, UpdateServer server, Hooks hooks, HostLookup* lookup = nullptr);

    // The first tick of the splash: starts the connection. Nothing happens
    // when no server is configured.
    void start();
    // The splash's one-second tick: the start goes on now if the reply has
    // not decided yet. A reply that comes later can still ask the question;
    // while it is asked, the start waits for the answer.
    void timeUp() {
        if (!m_asking) wentOn();
    }
    bool connected() const { return m_connected; }

    // An honest reply is a few hundred bytes; past this much the check stops
    // listening, so a server that floods or trickles for ever costs nothing.
    static constexpr size_t kMostBytes = 64 * 1024;

private:
    void sendRequest();
    void judge();
    void wentOn();

    UniSock m_socket;
    UpdateServer m_server;
    Hooks m_hooks;
    bool m_connected = false;
    bool m_asked = false;
    bool m_asking = false;
    bool m_wentOn = false;
    size_t m_received = 0;
};

}  // namespace tarvoke::net
