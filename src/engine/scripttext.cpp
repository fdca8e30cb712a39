#include "engine/scripttext.h"

#include <algorithm>

namespace tarvoke::engine {

namespace {

// One pass for the load and for tools that want origins; without them the
// tracking compiles away, as this runs over every byte of multi-megabyte
// recordings.
template <bool kTrack>
std::string strip(std::string_view text, SourceForm form, SourceOrigins* origins) {
    // Written through a pointer into a buffer of the full size.
    std::string out(text.size(), '\0');
    char* write = out.data();
    uint32_t* from = nullptr;
    size_t commentStart = 0;
    if constexpr (kTrack) {
        origins->offsets.resize(text.size());
        from = origins->offsets.data();
    }
    const bool compact = form == SourceForm::Compact;
    bool inQuotes = compact;
    bool inComment = false;
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
                if constexpr (kTrack) commentStart = i;
            }
        }
        if (inComment) continue;
        if (c == '"' && !compact) {
            inQuotes = !inQuotes;
        } else if (!inQuotes) {
            if (c == ' ') continue;
            c = lowerAscii(c);
        }
        if constexpr (kTrack) *from++ = static_cast<uint32_t>(i);
        *write++ = c;
    }
    out.resize(static_cast<size_t>(write - out.data()));
    if constexpr (kTrack) {
        origins->offsets.resize(out.size());
        origins->openComment = inComment ? std::optional<size_t>(commentStart) : std::nullopt;
    }
    return out;
}

}  // namespace

std::string stripSource(std::string_view text, SourceForm form) { return strip<false>(text, form, nullptr); }

std::string normaliseSource(std::string_view text, SourceForm form, SourceOrigins* origins) {
    if (!origins) {
        std::string code = strip<false>(text, form, nullptr);
        std::erase_if(code, [](char c) { return c == '\n' || c == '\r'; });
        return code;
    }
    std::string code = strip<true>(text, form, origins);
    size_t kept = 0;
    for (size_t i = 0; i < code.size(); ++i) {
        if (code[i] == '\n' || code[i] == '\r') continue;
        code[kept] = code[i];
        origins->offsets[kept++] = origins->offsets[i];
    }
    code.resize(kept);
    origins->offsets.resize(kept);
    return code;
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
