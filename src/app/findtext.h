#pragma once
// Find and Replace over the editor's text. Positions count characters.

#include <QString>
#include <optional>

namespace tarvoke::app {

struct FindState {
    QString text;
    bool matchCase = false;
    bool down = true;
    int findFrom = 0;
    // True until the first find has ended.
    bool fresh = true;
};

struct Selection {
    int start = 0;
    int length = 0;
    bool operator==(const Selection&) const = default;
};

// One search from the caret (selStart). When the caret still stands where the
// last find ended, the search starts one character further, so that the hit
// left selected is stepped over. The search stops at the ends of the text.
// Returns the hit to select, or nothing; either way findFrom becomes the
// caret after the search and fresh is cleared.
std::optional<Selection> findOnce(const QString& text, int selStart, FindState& state);

// Every occurrence, exact in case; an empty search text changes nothing.
QString replaceAll(const QString& text, const QString& find, const QString& replacement);

}  // namespace tarvoke::app
