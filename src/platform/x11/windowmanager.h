#pragma once
// Waiting for a window manager that was just started: it is ready once it has
// announced itself on the root window, as the EWMH says (the root's
// _NET_SUPPORTING_WM_CHECK names a window of its own whose property of that
// name names itself), and once it manages a new window. The announcement
// alone is not enough: openbox makes it early in its start, and a window
// mapped before its event loop runs stays unmapped until some later event
// wakes that loop.

#include <chrono>
#include <string>

namespace tarvoke::platform::x11 {

enum class WindowManagerWait { Ready, Ended, TimedOut, NoDisplay };

// Watches display on a connection of its own. endedFd becomes readable when
// the window manager has ended (its pidfd); the wait then stops at once.
WindowManagerWait waitForWindowManager(const std::string& display, int endedFd, std::chrono::milliseconds limit);

}  // namespace tarvoke::platform::x11
