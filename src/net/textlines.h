#pragma once
// The text side of the socket: cutting received bytes into lines, and the
// conversions between the program's UTF-8 byte strings and UTF-16.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarvoke::net {

struct Line {
    std::string text;
    int32_t kind;  // 1 CR LF, 2 LF, 3 CR
    bool raw;      // the bytes as received: not UTF-8 (nor UTF-16)
    bool operator==(const Line&) const = default;
};

// Cuts the complete lines off the front of buffer, leaving the unfinished
// rest. One line end decides for the whole buffer: the first of CR LF, LF, CR
// as UTF-16, then CR LF, LF, CR as bytes, that occurs at all. So with
// "a" CR LF "b" LF the buffer is cut at CR LF only and "b" LF stays.
std::vector<Line> cutLines(std::string& buffer);

// Walks at most the first 2048 bytes; a sequence cut by that limit counts as
// valid, an empty text does not.
bool looksLikeUtf8(std::string_view bytes);

// Bytes that are not UTF-8 stand for themselves (Latin-1), as in the editor.
std::string toUtf16(std::string_view utf8);
std::string fromUtf16(std::string_view utf16);

}  // namespace tarvoke::net
