#pragma once
// Windows for logic tests: a tree of windows with class and title that the
// look-ups search, printing the lines the dry run prints (handles decimal).

#include <string>
#include <vector>

#include "platform/dryrun/dryrun.h"
#include "platform/windows.h"

namespace tarvoke::platform::fake {

class FakeWindows : public Windows {
public:
    explicit FakeWindows(dryrun::LineSink sink) : m_sink(std::move(sink)) {}

    // Adds a window under parent (0: a top-level window) after its earlier
    // children; returns its handle.
    WindowId addWindow(const std::string& windowClass, const std::string& title, WindowId parent = 0);
    // Takes a window away, as when it closes; its children go with it.
    void removeWindow(WindowId window);
    // What windowFromPoint answers.
    void setWindowAtPoint(WindowId window) { m_windowAtPoint = window; }

    WindowId findWindow(const std::optional<std::string>& windowClass,
                        const std::optional<std::string>& title) override;
    WindowId findWindowEx(WindowId parent, WindowId childAfter, const std::optional<std::string>& windowClass,
                          const std::optional<std::string>& title) override;
    WindowId windowFromPoint(Point) override { return m_windowAtPoint; }
    WindowId parent(WindowId window) override;
    std::string className(WindowId window) override;
    std::string title(WindowId window) override;

private:
    struct Window {
        WindowId id = 0;
        WindowId parent = 0;
        std::string windowClass;
        std::string title;
    };
    const Window* find(WindowId window) const;
    WindowId firstMatch(WindowId parent, WindowId childAfter, const std::optional<std::string>& windowClass,
                        const std::optional<std::string>& title) const;

    dryrun::LineSink m_sink;
    std::vector<Window> m_windows;  // in the order they were added
    WindowId m_nextId = 1001;
    WindowId m_windowAtPoint = 0;
};

}  // namespace tarvoke::platform::fake
