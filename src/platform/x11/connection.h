#pragma once
// The one connection to the X server that the roles of the X11 platform
// share, with the one place where X errors are caught and the one place
// where events are read and handed to the roles that want them.

// Headers of ours that name things None, Bool or Status come before Xlib,
// whose macros of those names would break them.
#include "platform/keytable.h"

#include <X11/Xlib.h>
#include <xcb/xcb.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/eventloop.h"

namespace tarvoke::platform::x11 {

class Connection {
public:
    // Opens the display named by DISPLAY; check ok() after. The loop reads
    // the events and sends what was queued before each of its turns.
    explicit Connection(EventLoop& loop);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool ok() const { return m_display != nullptr; }
    Display* display() const { return m_display; }
    // The same connection through XCB, for requests whose answers are read
    // later; Xlib and XCB keep one order of requests.
    xcb_connection_t* xcb() const { return m_xcb; }
    Window root() const { return m_root; }
    Atom atom(const char* name);

    // Runs requests that wait for their answer (queries); false when the
    // server refused one of them (a window that vanished). A refused request
    // never ends the program: every X error lands in one handler that
    // counts it.
    bool checked(const std::function<void()>& request);
    // The number of X errors seen since the start; errors of requests that
    // nobody waits for (a sent event to a closed window) are counted and
    // otherwise dropped.
    static unsigned long errorCount();

    // Handlers see every event read from the server, in order.
    void onEvent(std::function<void(XEvent&)> handler) { m_handlers.push_back(std::move(handler)); }
    // Reads what the server has sent without waiting, and hands it on.
    void drainEvents();
    // Sends what is buffered, through Xlib or XCB, without waiting for an
    // answer.
    void flush();
    // Notes requests left in the buffer on purpose, so that a burst of them
    // leaves in one write: they go out at the next turn of the event loop
    // (before it reads or waits), with the next request that waits for an
    // answer, or at the next flush, whichever comes first.
    void queued() { m_queued = true; }
    // How many flushes there were: requests queued since the last one
    // leave together.
    unsigned long flushes() const { return m_flushes; }
    // To be called after reading an answer through the XCB side, which may
    // move events into XCB's queue.
    void noteXcbRead() { ++m_xcbTraffic; }

    // Where the pointer is on the root window, and which buttons are down
    // (Button1Mask ...): one round trip.
    struct Pointer {
        int x = 0;
        int y = 0;
        unsigned buttons = 0;
    };
    Pointer queryPointer();

    // Properties of a window; nullopt when absent or the window is gone.
    std::optional<std::vector<unsigned long>> cardinals(Window window, Atom property, Atom type);
    std::optional<std::string> text(Window window, Atom property);

private:
    // Sends what was queued, then drains when a call since the last drain
    // may have moved events into a queue, where the socket no longer tells
    // of them.
    void turn();
    void drainAfterTraffic();

    Display* m_display = nullptr;
    xcb_connection_t* m_xcb = nullptr;
    Window m_root = 0;
    std::unique_ptr<EventLoop::Handle> m_readable;
    std::unique_ptr<EventLoop::Handle> m_beforeTurn;
    unsigned long m_xcbTraffic = 0;
    bool m_queued = false;
    unsigned long m_flushes = 0;
    // The next request and the XCB traffic at the last drain.
    unsigned long m_drainedRequest = 0;
    unsigned long m_drainedXcbTraffic = 0;
    std::vector<std::function<void(XEvent&)>> m_handlers;
};

}  // namespace tarvoke::platform::x11
