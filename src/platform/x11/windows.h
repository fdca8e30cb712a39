#pragma once
// Windows of the X desktop as the window commands see them: top-level
// windows are client windows (never a window manager's frame), a class is
// the class part of the window's own WM_CLASS, a title is _NET_WM_NAME or
// else WM_NAME. A window that vanished reads as 0 and empty texts.

#include <vector>

#include "platform/windows.h"
#include "platform/x11/connection.h"

namespace tarvoke::platform::x11 {

class X11Windows : public Windows {
public:
    explicit X11Windows(Connection& connection) : m_x(connection) {}
    WindowId findWindow(const std::optional<std::string>& windowClass,
                        const std::optional<std::string>& title) override;
    WindowId findWindowEx(WindowId parent, WindowId childAfter, const std::optional<std::string>& windowClass,
                          const std::optional<std::string>& title) override;
    WindowId windowFromPoint(Point point) override;
    WindowId parent(WindowId window) override;
    std::string className(WindowId window) override;
    std::string title(WindowId window) override;

    // The client windows, from _NET_CLIENT_LIST or else by WM_STATE.
    std::vector<Window> clientWindows();
    // The process that owns a window by _NET_WM_PID; 0 when unknown.
    unsigned long processOf(Window window);
    Connection& connection() { return m_x; }

private:
    std::vector<Window> children(Window window);
    bool isClient(Window window);
    void collectClients(Window window, std::vector<Window>& clients);
    bool matches(Window window, const std::optional<std::string>& windowClass, const std::optional<std::string>& title);
    WindowId firstMatch(const std::vector<Window>& windows, WindowId after, const std::optional<std::string>& windowClass,
                        const std::optional<std::string>& title);

    Connection& m_x;
};

}  // namespace tarvoke::platform::x11
