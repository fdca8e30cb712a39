#include "platform/x11/connection.h"

#include <X11/Xatom.h>
#include <X11/Xlib-xcb.h>

namespace tarvoke::platform::x11 {
namespace {

unsigned long g_errors = 0;
unsigned long g_lastErrorSerial = 0;

int countError(Display*, XErrorEvent* error) {
    ++g_errors;
    g_lastErrorSerial = error->serial;
    return 0;
}

}  // namespace

Connection::Connection(EventLoop& loop) {
    m_display = XOpenDisplay(nullptr);
    if (!m_display) return;
    XSetErrorHandler(countError);
    m_xcb = XGetXCBConnection(m_display);
    m_root = DefaultRootWindow(m_display);
    // Events are read by the event loop: when the socket has data, and at
    // the start of each turn after a call that may have moved events into a
    // queue (the socket then stays quiet about them). Reads of the key state
    // between two turns of the loop see one unchanging state, so a recorder
    // tick compares its keys against one moment.
    m_readable = loop.watchReadable(ConnectionNumber(m_display), [this] { drainEvents(); });
    m_beforeTurn = loop.beforeEachTurn([this] { turn(); });
}

Connection::~Connection() {
    m_readable.reset();
    m_beforeTurn.reset();
    if (m_display) XCloseDisplay(m_display);
}

unsigned long Connection::errorCount() { return g_errors; }

Atom Connection::atom(const char* name) { return XInternAtom(m_display, name, False); }

bool Connection::checked(const std::function<void()>& request) {
    const unsigned long first = NextRequest(m_display);
    const unsigned long before = g_errors;
    request();
    return g_errors == before || g_lastErrorSerial < first;
}

void Connection::flush() {
    // A flush reads too, when the server has sent something meanwhile.
    XFlush(m_display);
    ++m_xcbTraffic;
    ++m_flushes;
    m_queued = false;
}

void Connection::turn() {
    if (m_queued) flush();
    drainAfterTraffic();
}

// Every Xlib request moves the request count on, and every direct use of
// the XCB side is noted: with neither since the last drain, and nothing in
// Xlib's queue, only the socket can bring events, and its notifier reads
// them. An idle turn of the loop then costs no system call here.
void Connection::drainAfterTraffic() {
    if (NextRequest(m_display) == m_drainedRequest && m_xcbTraffic == m_drainedXcbTraffic &&
        XQLength(m_display) == 0)
        return;
    drainEvents();
}

void Connection::drainEvents() {
    m_drainedRequest = NextRequest(m_display);
    m_drainedXcbTraffic = m_xcbTraffic;
    while (XEventsQueued(m_display, QueuedAfterReading) > 0) {
        XEvent event;
        XNextEvent(m_display, &event);
        for (auto& handler : m_handlers) handler(event);
        if (event.type == GenericEvent) XFreeEventData(m_display, &event.xcookie);
    }
}

Connection::Pointer Connection::queryPointer() {
    Window root = 0, child = 0;
    int winX = 0, winY = 0;
    Pointer pointer;
    XQueryPointer(m_display, m_root, &root, &child, &pointer.x, &pointer.y, &winX, &winY, &pointer.buttons);
    return pointer;
}

std::optional<std::vector<unsigned long>> Connection::cardinals(Window window, Atom property, Atom type) {
    Atom actualType = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    const int status = XGetWindowProperty(m_display, window, property, 0, 1 << 16, False, type, &actualType, &format,
                                          &count, &after, &data);
    if (status != Success || actualType != type || format != 32) {
        if (data) XFree(data);
        return std::nullopt;
    }
    // Xlib hands 32-bit items as longs.
    const auto* items = reinterpret_cast<const unsigned long*>(data);
    std::vector<unsigned long> values(items, items + count);
    XFree(data);
    return values;
}

std::optional<std::string> Connection::text(Window window, Atom property) {
    Atom actualType = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    const int status = XGetWindowProperty(m_display, window, property, 0, 1 << 16, False, AnyPropertyType, &actualType,
                                          &format, &count, &after, &data);
    if (status != Success || actualType == None || format != 8) {
        if (data) XFree(data);
        return std::nullopt;
    }
    std::string value(reinterpret_cast<const char*>(data), count);
    XFree(data);
    return value;
}

}  // namespace tarvoke::platform::x11
