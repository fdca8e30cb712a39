#include "recorder/windowselection.h"

#include <vector>

namespace tarvoke::recorder {

std::string cutWindowText(std::string text) {
    constexpr size_t kLimit = 99;
    if (text.size() <= kLimit) return text;
    size_t cut = kLimit;
    // A continuation byte (10xxxxxx) at the cut belongs to a sequence that started before it.
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
    text.resize(cut);
    return text;
}

std::string windowSelection(platform::Windows& windows, platform::Input& input) {
    std::vector<std::string> upward;
    platform::WindowId current = windows.windowFromPoint(input.cursorPos());
    // No escaping: a quote in a class or title stands as it is.
    for (;;) {
        const std::string windowClass = cutWindowText(windows.className(current));
        const std::string title = cutWindowText(windows.title(current));
        const platform::WindowId parent = current ? windows.parent(current) : 0;
        if (parent == 0) {
            upward.push_back("SelectWindow(\"" + windowClass + "\", \"" + title + "\");");
            break;
        }
        upward.push_back("SelectSubWindow(\"" + windowClass + "\");");
        current = parent;
    }
    std::string lines;
    for (auto line = upward.rbegin(); line != upward.rend(); ++line) lines += *line + "\n";
    return lines;
}

}  // namespace tarvoke::recorder
