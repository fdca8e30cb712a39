#include "engine/scripttext.h"

namespace tarvoke::engine {

std::string stripSource(std::string_view text, SourceForm form) {
    // Written through a pointer into a buffer of the full size: this runs
    // over every byte of multi-megabyte recordings.
    std::string out(text.size(), '\0');
    char* write = out.data();
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
            }
        }
        if (inComment) continue;
        if (c == '"' && !compact) {
            inQuotes = !inQuotes;
            *write++ = c;
        } else if (inQuotes) {
            *write++ = c;
        } else if (c != ' ') {
            *write++ = lowerAscii(c);
        }
    }
    out.resize(static_cast<size_t>(write - out.data()));
    return out;
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
