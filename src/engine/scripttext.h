#pragma once
// The text operations of the load: a few passes of plain replacement and
// splitting whose quirks are the language's rules.

#include <string>
#include <string_view>

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
