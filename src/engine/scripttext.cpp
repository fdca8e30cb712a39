#include "engine/scripttext.h"

#include <algorithm>

namespace tarvoke::engine {

namespace {

// One pass for the load and for tools that look for where a byte of the
// code came from: kept(i, c) sees each byte written and its offset in the
// text. The load's kept does nothing and compiles away, as this runs over
// every byte of multi-megabyte recordings.
template <typename Kept>
std::string strip(std::string_view text, SourceForm form, std::optional<size_t>* openComment, Kept&& kept) {
    // Written through a pointer into a buffer of the full size.
    std::string out(text.size(), '\0');
    char* write = out.data();
    const bool compact = form == SourceForm::Compact;
    bool inQuotes = compact;
    bool inComment = false;
    size_t commentStart = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '\t') continue;
        if (c == '#') {
            if (inComment) {
                // The character behind a closing "#" is taken as it is: it
                // cannot open a new comment (so "##" inside one prints "#").
                inComment = false;
                do {
                    ++i;
                } while (i < text.size() && text[i] == '\t');
                if (i >= text.size()) break;
                c = text[i];
            } else {
                inComment = true;
                commentStart = i;
            }
        }
        if (inComment) continue;
        if (c == '"' && !compact) {
            inQuotes = !inQuotes;
        } else if (!inQuotes) {
            if (c == ' ') continue;
            c = lowerAscii(c);
        }
        kept(i, c);
        *write++ = c;
    }
    out.resize(static_cast<size_t>(write - out.data()));
    if (openComment) *openComment = inComment ? std::optional<size_t>(commentStart) : std::nullopt;
    return out;
}

constexpr auto kKeepNothing = [](size_t, char) {};

}  // namespace

std::string stripSource(std::string_view text, SourceForm form) { return strip(text, form, nullptr, kKeepNothing); }

std::string normaliseSource(std::string_view text, SourceForm form, std::optional<size_t>* openComment) {
    std::string code = strip(text, form, openComment, kKeepNothing);
    std::erase_if(code, [](char c) { return c == '\n' || c == '\r'; });
    return code;
}

std::vector<size_t> sourceOffsets(std::string_view text, SourceForm form, const std::vector<size_t>& codeOffsets) {
    std::vector<size_t> offsets(codeOffsets.size(), text.size());
    size_t code = 0, next = 0;
    strip(text, form, nullptr, [&](size_t i, char c) {
        if (c == '\n' || c == '\r') return;  // normaliseSource drops them
        for (; next < codeOffsets.size() && codeOffsets[next] == code; ++next) offsets[next] = i;
        ++code;
    });
    return offsets;
}

std::string_view getCommandName(std::string_view buffer) {
    return buffer.substr(0, std::min(buffer.find('('), buffer.size()));
}

std::string_view getParameterText(std::string_view buffer) {
    const size_t open = buffer.find('(');
    // A "(" that is the last character leaves nothing to take.
    if (open == std::string_view::npos || open + 1 >= buffer.size()) return {};
    return buffer.substr(open + 1, buffer.size() - open - 2);
}

int countParameters(std::string_view parameterText) {
    if (parameterText.empty()) return 0;
    int commas = 0;
    for (char c : parameterText)
        if (c == ',') ++commas;
    return commas + 1;
}

bool isHexText(std::string_view text) { return text.size() >= 2 && text[0] == '0' && text[1] == 'x'; }

std::string lowerAscii(std::string_view text) {
    std::string out(text);
    for (char& c : out) c = lowerAscii(c);
    return out;
}

}  // namespace tarvoke::engine
