#include "platform/fake/fakewindows.h"

#include "platform/textcase.h"

#include <algorithm>

namespace tarvoke::platform::fake {

WindowId FakeWindows::addWindow(const std::string& windowClass, const std::string& title, WindowId parent) {
    m_windows.push_back({m_nextId, parent, windowClass, title});
    return m_nextId++;
}

void FakeWindows::removeWindow(WindowId window) {
    std::vector<WindowId> gone{window};
    for (size_t i = 0; i < gone.size(); ++i)
        for (const Window& w : m_windows)
            if (w.parent == gone[i]) gone.push_back(w.id);
    std::erase_if(m_windows, [&](const Window& w) { return std::ranges::find(gone, w.id) != gone.end(); });
}

const FakeWindows::Window* FakeWindows::find(WindowId window) const {
    const auto found = std::ranges::find(m_windows, window, &Window::id);
    return found == m_windows.end() ? nullptr : &*found;
}

WindowId FakeWindows::firstMatch(WindowId parent, WindowId childAfter, const std::optional<std::string>& windowClass,
                                 const std::optional<std::string>& title) const {
    bool afterSeen = childAfter == 0;
    for (const Window& w : m_windows) {
        if (w.parent != parent) continue;
        if (!afterSeen) {
            afterSeen = w.id == childAfter;
            continue;
        }
        if ((!windowClass || equalIgnoringCase(*windowClass, w.windowClass)) &&
            (!title || equalIgnoringCase(*title, w.title)))
            return w.id;
    }
    return 0;
}

WindowId FakeWindows::findWindow(const std::optional<std::string>& windowClass,
                                 const std::optional<std::string>& title) {
    m_sink("FindWindow " + dryrun::quotedOrNull(windowClass) + " " + dryrun::quotedOrNull(title));
    return firstMatch(0, 0, windowClass, title);
}

WindowId FakeWindows::findWindowEx(WindowId parent, WindowId childAfter,
                                   const std::optional<std::string>& windowClass,
                                   const std::optional<std::string>& title) {
    m_sink("FindWindowEx " + std::to_string(parent) + " " + dryrun::quotedOrNull(windowClass));
    if (parent != 0 && !find(parent)) return 0;
    return firstMatch(parent, childAfter, windowClass, title);
}

WindowId FakeWindows::parent(WindowId window) {
    const Window* w = find(window);
    return w ? w->parent : 0;
}

std::string FakeWindows::className(WindowId window) {
    const Window* w = find(window);
    return w ? w->windowClass : std::string();
}

std::string FakeWindows::title(WindowId window) {
    const Window* w = find(window);
    return w ? w->title : std::string();
}

}  // namespace tarvoke::platform::fake
