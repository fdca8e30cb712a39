#pragma once
// The text operations of the load: a few passes of plain replacement and
// splitting whose quirks are the language's rules.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvoke::engine {

// The form of a text handed to the load.
enum class SourceForm {
    Text,     // as written
    Compact,  // a compiled program's body: blanks and case already settled, quotes gone
};

// Drops tabs and comments ("#" to the next "#", quotes or not), and outside
// double quotes drops blanks and lower-cases ASCII letters. A compact body
// lost its quotes when it was compiled, so all of it is kept as if quoted:
// folding it again would fold the text that was quoted.
std::string stripSource(std::string_view text, SourceForm form = SourceForm::Text);

// The code the load splits: stripSource, then every CR and LF removed,
// inside quotes too. openComment receives the "#" of a comment never closed.
std::string normaliseSource(std::string_view text, SourceForm form, std::optional<size_t>* openComment = nullptr);
// Where bytes of that code came from: for offsets into the code, in
// ascending order, their offsets in text (text's size for one past the end).
std::vector<size_t> sourceOffsets(std::string_view text, SourceForm form, const std::vector<size_t>& codeOffsets);

// The load's split of the code into statements. A ";" ends a statement only
// when the text since the last statement holds both brackets somewhere;
// otherwise it is dropped (dropped(offset)) and the text runs on. Quotes do
// not matter here, and text behind the last ";" is ignored. take(statement,
// start) gets each statement's text and the offset of its first byte; a
// statement with dropped ";" is glued together in buffer. Returns the offset
// behind the last ";".
template <typename Take, typename Dropped>
size_t splitStatements(std::string_view code, std::string& buffer, Take&& take, Dropped&& dropped) {
    bool hasOpen = false, hasClose = false;
    size_t start = 0, first = 0;
    for (size_t end; (end = code.find(';', start)) != std::string_view::npos; start = end + 1) {
        const std::string_view piece = code.substr(start, end - start);
        if (buffer.empty()) first = start;
        hasOpen |= piece.find('(') != std::string_view::npos;
        hasClose |= piece.find(')') != std::string_view::npos;
        if (!(hasOpen && hasClose)) {
            buffer += piece;
            dropped(end);
            continue;
        }
        // Most statements are one piece between two ";", taken where they stand.
        if (buffer.empty()) {
            take(piece, start);
        } else {
            buffer += piece;
            take(std::string_view(buffer), first);
            buffer.clear();
        }
        hasOpen = hasClose = false;
    }
    return start;
}

// The parts of one statement buffer such as "name(a,b)".
std::string_view getCommandName(std::string_view buffer);
// From behind the first "(" to the last character, that one excluded.
std::string_view getParameterText(std::string_view buffer);
// 0 for an empty text, else one more than the commas (quoted ones too).
int countParameters(std::string_view parameterText);
// Hands each piece between commas to `take`, in order, without a vector.
template <typename Take>
void forEachParameter(std::string_view parameterText, Take&& take) {
    if (parameterText.empty()) return;
    for (size_t start = 0;;) {
        const size_t comma = parameterText.find(',', start);
        take(parameterText.substr(start, comma == std::string_view::npos ? std::string_view::npos : comma - start));
        if (comma == std::string_view::npos) return;
        start = comma + 1;
    }
}

bool isHexText(std::string_view text);
inline char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; }
std::string lowerAscii(std::string_view text);

}  // namespace tarvoke::engine
