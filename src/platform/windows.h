#pragma once
// Windows of the desktop: look-ups and what the window context reads.

#include <optional>
#include <string>

#include "platform/types.h"

namespace tarvoke::platform {

class Windows {
public:
    virtual ~Windows() = default;
    // The first top-level (client) window with that class and title; an
    // absent text matches anything. 0 when there is none.
    virtual WindowId findWindow(const std::optional<std::string>& windowClass,
                                const std::optional<std::string>& title) = 0;
    // The first child of parent (0: the top-level windows) after childAfter.
    virtual WindowId findWindowEx(WindowId parent, WindowId childAfter,
                                  const std::optional<std::string>& windowClass,
                                  const std::optional<std::string>& title) = 0;
    virtual WindowId windowFromPoint(Point point) = 0;
    virtual WindowId parent(WindowId window) = 0;
    virtual std::string className(WindowId window) = 0;
    virtual std::string title(WindowId window) = 0;
};

}  // namespace tarvoke::platform
