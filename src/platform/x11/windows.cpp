#include "platform/x11/windows.h"

#include "platform/textcase.h"

#include <X11/Xatom.h>
#include <X11/Xutil.h>

#include <algorithm>

namespace tarvoke::platform::x11 {

std::vector<Window> X11Windows::children(Window window) {
    Window root = 0, parent = 0;
    Window* list = nullptr;
    unsigned count = 0;
    std::vector<Window> result;
    if (!m_x.checked([&] { XQueryTree(m_x.display(), window, &root, &parent, &list, &count); })) return result;
    if (list) {
        result.assign(list, list + count);
        XFree(list);
    }
    return result;
}

bool X11Windows::isClient(Window window) {
    return m_x.cardinals(window, m_x.atom("WM_STATE"), m_x.atom("WM_STATE")).has_value();
}

void X11Windows::collectClients(Window window, std::vector<Window>& clients) {
    for (Window child : children(window)) {
        if (isClient(child)) clients.push_back(child);
        else collectClients(child, clients);
    }
}

std::vector<Window> X11Windows::clientWindows() {
    if (auto list = m_x.cardinals(m_x.root(), m_x.atom("_NET_CLIENT_LIST"), XA_WINDOW))
        return std::vector<Window>(list->begin(), list->end());
    std::vector<Window> clients;
    collectClients(m_x.root(), clients);
    return clients;
}

unsigned long X11Windows::processOf(Window window) {
    const auto pid = m_x.cardinals(window, m_x.atom("_NET_WM_PID"), XA_CARDINAL);
    return pid && !pid->empty() ? pid->front() : 0;
}

std::string X11Windows::className(WindowId window) {
    if (window == 0) return {};
    XClassHint hint{};
    bool found = false;
    m_x.checked([&] { found = XGetClassHint(m_x.display(), window, &hint) != 0; });
    if (!found) return {};
    std::string result = hint.res_class ? hint.res_class : "";
    if (hint.res_name) XFree(hint.res_name);
    if (hint.res_class) XFree(hint.res_class);
    return result;
}

std::string X11Windows::title(WindowId window) {
    if (window == 0) return {};
    if (auto name = m_x.text(window, m_x.atom("_NET_WM_NAME"))) return *name;
    return m_x.text(window, XA_WM_NAME).value_or(std::string());
}

bool X11Windows::matches(Window window, const std::optional<std::string>& windowClass,
                         const std::optional<std::string>& title) {
    if (windowClass && !equalIgnoringCase(className(window), *windowClass)) return false;
    return !title || equalIgnoringCase(this->title(window), *title);
}

WindowId X11Windows::firstMatch(const std::vector<Window>& windows, WindowId after,
                                const std::optional<std::string>& windowClass, const std::optional<std::string>& title) {
    auto it = windows.begin();
    if (after != 0) {
        it = std::find(windows.begin(), windows.end(), after);
        if (it == windows.end()) return 0;
        ++it;
    }
    for (; it != windows.end(); ++it)
        if (matches(*it, windowClass, title)) return static_cast<WindowId>(*it);
    return 0;
}

WindowId X11Windows::findWindow(const std::optional<std::string>& windowClass,
                                const std::optional<std::string>& title) {
    return firstMatch(clientWindows(), 0, windowClass, title);
}

WindowId X11Windows::findWindowEx(WindowId parent, WindowId childAfter, const std::optional<std::string>& windowClass,
                                  const std::optional<std::string>& title) {
    if (parent == 0) return firstMatch(clientWindows(), childAfter, windowClass, title);
    return firstMatch(children(parent), childAfter, windowClass, title);
}

WindowId X11Windows::windowFromPoint(Point point) {
    Window from = m_x.root();
    int x = point.x, y = point.y;
    // Each step descends one level, to the child that holds the point, in
    // the child's own coordinates.
    for (;;) {
        Window child = None, unused = None;
        int childX = 0, childY = 0;
        if (!m_x.checked([&] {
                XTranslateCoordinates(m_x.display(), from, from, x, y, &childX, &childY, &child);
                if (child != None) XTranslateCoordinates(m_x.display(), from, child, x, y, &childX, &childY, &unused);
            }))
            return 0;
        if (child == None) break;
        from = child;
        x = childX;
        y = childY;
    }
    return from == m_x.root() ? 0 : static_cast<WindowId>(from);
}

WindowId X11Windows::parent(WindowId window) {
    if (window == 0 || isClient(window)) return 0;
    Window root = 0, parent = 0;
    Window* list = nullptr;
    unsigned count = 0;
    if (!m_x.checked([&] { XQueryTree(m_x.display(), window, &root, &parent, &list, &count); })) return 0;
    if (list) XFree(list);
    // Above a client window lie only frames and the root: no parent.
    return parent == root || parent == 0 ? 0 : static_cast<WindowId>(parent);
}

}  // namespace tarvoke::platform::x11
