#include "app/findtext.h"

namespace tarvoke::app {

namespace {

// 0-based index of the hit, or -1. p is the caret plus the offset.
int searchDown(const QString& text, const QString& find, int p, Qt::CaseSensitivity cs) {
    if (p > text.size()) return -1;
    return text.indexOf(find, p, cs);
}

// Tries 1-based positions p-1 down to 1, comparing the whole search text.
int searchUp(const QString& text, const QString& find, int p, Qt::CaseSensitivity cs) {
    for (qsizetype position = std::min<qsizetype>(p - 1, text.size()); position >= 1; --position) {
        if (QStringView(text).mid(position - 1, find.size()).compare(find, cs) == 0) return static_cast<int>(position - 1);
    }
    return -1;
}

}  // namespace

std::optional<Selection> findOnce(const QString& text, int selStart, FindState& state) {
    const int offset = (selStart == state.findFrom && !state.fresh) ? 1 : 0;
    const int p = selStart + offset;
    const auto cs = state.matchCase ? Qt::CaseSensitive : Qt::CaseInsensitive;
    const int hit = state.down ? searchDown(text, state.text, p, cs)
                                         : searchUp(text, state.text, p, cs);
    std::optional<Selection> found;
    if (hit >= 0) found = Selection{hit, static_cast<int>(state.text.size())};
    state.findFrom = found ? found->start : selStart;
    state.fresh = false;
    return found;
}

QString replaceAll(const QString& text, const QString& find, const QString& replacement) {
    if (find.isEmpty()) return text;
    QString result = text;
    return result.replace(find, replacement, Qt::CaseSensitive);
}

}  // namespace tarvoke::app
