#include "platform/x11/windowmanager.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <poll.h>

namespace tarvoke::platform::x11 {
namespace {

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

bool announced(Display* display, Atom check) {
    const Window own = windowProperty(display, DefaultRootWindow(display), check);
    return own != None && windowProperty(display, own, check) == own;
}

}  // namespace

WindowManagerWait waitForWindowManager(const std::string& name, int endedFd, std::chrono::milliseconds limit) {
    Display* display = XOpenDisplay(name.c_str());
    if (!display) return WindowManagerWait::NoDisplay;
    const auto previous = XSetErrorHandler(ignoreError);
    // Selected before the first look, so that an announcement made between
    // the look and the wait still wakes the wait.
    XSelectInput(display, DefaultRootWindow(display), PropertyChangeMask);
    const Atom check = XInternAtom(display, "_NET_SUPPORTING_WM_CHECK", False);
    const auto deadline = std::chrono::steady_clock::now() + limit;
    WindowManagerWait result = WindowManagerWait::TimedOut;
    for (;;) {
        if (announced(display, check)) {
            result = WindowManagerWait::Ready;
            break;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) break;
        pollfd fds[2] = {{ConnectionNumber(display), POLLIN, 0}, {endedFd, POLLIN, 0}};
        if (::poll(fds, 2, static_cast<int>(left.count())) < 0) continue;
        if (fds[1].revents) {
            result = WindowManagerWait::Ended;
            break;
        }
        while (XPending(display)) {
            XEvent event;
            XNextEvent(display, &event);
        }
    }
    XSetErrorHandler(previous);
    XCloseDisplay(display);
    return result;
}

}  // namespace tarvoke::platform::x11
