#include "platform/x11/windowmanager.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <poll.h>

#include <algorithm>

namespace tarvoke::platform::x11 {
namespace {

// While the probe waits to be managed, the root gets a property change this
// often: the event wakes a window manager whose loop has the probe's map
// request queued but is asleep on its socket.
constexpr int kWakeMs = 20;

// The window named by the root's property may be gone or not yet made: its
// errors are expected and mean "not ready".
int ignoreError(Display*, XErrorEvent*) { return 0; }

Window windowProperty(Display* display, Window window, Atom property) {
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    Window value = None;
    if (XGetWindowProperty(display, window, property, 0, 1, False, XA_WINDOW, &type, &format, &count, &after,
                           &data) == Success &&
        type == XA_WINDOW && format == 32 && count == 1)
        value = static_cast<Window>(*reinterpret_cast<unsigned long*>(data));
    if (data) XFree(data);
    return value;
}

bool hasProperty(Display* display, Window window, Atom property) {
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    const bool found = XGetWindowProperty(display, window, property, 0, 0, False, AnyPropertyType, &type, &format,
                                          &count, &after, &data) == Success &&
                       type != None;
    if (data) XFree(data);
    return found;
}

}  // namespace

WindowManagerWait waitForWindowManager(const std::string& name, int endedFd, std::chrono::milliseconds limit) {
    Display* display = XOpenDisplay(name.c_str());
    if (!display) return WindowManagerWait::NoDisplay;
    const auto previous = XSetErrorHandler(ignoreError);
    const Window root = DefaultRootWindow(display);
    // Selected before the first look, so that an announcement made between
    // the look and the wait still wakes the wait.
    XSelectInput(display, root, PropertyChangeMask);
    const Atom check = XInternAtom(display, "_NET_SUPPORTING_WM_CHECK", False);
    const Atom wmState = XInternAtom(display, "WM_STATE", False);
    const Atom wake = XInternAtom(display, "_TARVOKE_WAKE", False);
    // A window manager sets WM_STATE on every window it manages (ICCCM 4.1.3.1).
    const Window probe = XCreateSimpleWindow(display, root, 0, 0, 1, 1, 0, 0, 0);
    XSelectInput(display, probe, PropertyChangeMask);
    bool probing = false;

    const auto deadline = std::chrono::steady_clock::now() + limit;
    WindowManagerWait result = WindowManagerWait::TimedOut;
    for (;;) {
        if (!probing) {
            const Window own = windowProperty(display, root, check);
            if (own != None && windowProperty(display, own, check) == own) {
                XMapWindow(display, probe);
                probing = true;
            }
        }
        if (probing && hasProperty(display, probe, wmState)) {
            result = WindowManagerWait::Ready;
            break;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) break;
        pollfd fds[2] = {{ConnectionNumber(display), POLLIN, 0}, {endedFd, POLLIN, 0}};
        const int ready = ::poll(fds, 2, probing ? std::min<int>(kWakeMs, static_cast<int>(left.count()))
                                                 : static_cast<int>(left.count()));
        if (ready < 0) continue;
        if (fds[1].revents) {
            result = WindowManagerWait::Ended;
            break;
        }
        if (ready == 0 && probing) {
            const long zero = 0;
            XChangeProperty(display, root, wake, XA_CARDINAL, 32, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(&zero), 1);
            XFlush(display);
        }
        while (XPending(display)) {
            XEvent event;
            XNextEvent(display, &event);
        }
    }
    XDestroyWindow(display, probe);
    XDeleteProperty(display, root, wake);
    XSync(display, False);
    XSetErrorHandler(previous);
    XCloseDisplay(display);
    return result;
}

}  // namespace tarvoke::platform::x11
