#include "net/textlines.h"

#include <array>

namespace tarvoke::net {
namespace {

void appendUtf8(std::string& out, uint32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

void appendUnit(std::string& out, uint32_t unit) {
    out += static_cast<char>(unit & 0xFF);
    out += static_cast<char>(unit >> 8);
}

// The code point at bytes[i] and its length; a byte that starts no valid
// sequence is a code point of its own.
std::pair<uint32_t, size_t> decodeAt(std::string_view bytes, size_t i) {
    const auto lead = static_cast<unsigned char>(bytes[i]);
    const size_t length = lead < 0x80 ? 1 : lead >= 0xC2 && lead < 0xE0 ? 2 : lead >= 0xE0 && lead < 0xF0 ? 3
                        : lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
    if (length <= 1 || i + length > bytes.size()) return {lead, 1};
    uint32_t code = lead & (0x7F >> length);
    for (size_t k = 1; k < length; ++k) {
        const auto next = static_cast<unsigned char>(bytes[i + k]);
        if ((next & 0xC0) != 0x80) return {lead, 1};
        code = (code << 6) | (next & 0x3F);
    }
    static constexpr std::array<uint32_t, 5> kLeast = {0, 0, 0x80, 0x800, 0x10000};
    if (code < kLeast[length] || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return {lead, 1};
    return {code, length};
}

}  // namespace

std::vector<Line> cutLines(std::string& buffer) {
    struct Form {
        std::string_view end;
        int32_t kind;
        bool wide;
    };
    static constexpr std::string_view kCrLfWide("\r\0\n\0", 4), kLfWide("\n\0", 2), kCrWide("\r\0", 2);
    static constexpr std::array<Form, 6> kForms = {{
        {kCrLfWide, 1, true}, {kLfWide, 2, true}, {kCrWide, 3, true},
        {"\r\n", 1, false}, {"\n", 2, false}, {"\r", 3, false},
    }};
    std::vector<Line> lines;
    for (const Form& form : kForms) {
        if (buffer.find(form.end) == std::string::npos) continue;
        size_t start = 0;
        for (size_t end; (end = buffer.find(form.end, start)) != std::string::npos; start = end + form.end.size()) {
            const std::string_view piece = std::string_view(buffer).substr(start, end - start);
            if (form.wide) lines.push_back({fromUtf16(piece), form.kind, false});
            else lines.push_back({std::string(piece), form.kind, !looksLikeUtf8(piece)});
        }
        buffer.erase(0, start);
        break;
    }
    return lines;
}

bool looksLikeUtf8(std::string_view bytes) {
    if (bytes.empty()) return false;
    const size_t limit = std::min<size_t>(bytes.size(), 2048);
    for (size_t i = 0; i < limit;) {
        const auto lead = static_cast<unsigned char>(bytes[i++]);
        if (lead < 128 || lead >= 254) continue;
        if (lead < 192) return false;
        // The count of leading ones, less one, is how many follow.
        size_t follow = 1;
        while (follow < 5 && (lead & (0x40 >> follow))) ++follow;
        for (; follow > 0 && i < limit; --follow, ++i)
            if ((static_cast<unsigned char>(bytes[i]) & 0xC0) != 0x80) return false;
        if (follow > 0 && limit == bytes.size()) return false;
    }
    return true;
}

std::string toUtf16(std::string_view utf8) {
    std::string out;
    out.reserve(utf8.size() * 2);
    for (size_t i = 0; i < utf8.size();) {
        const auto [code, length] = decodeAt(utf8, i);
        i += length;
        if (code >= 0x10000) {
            appendUnit(out, 0xD800 + ((code - 0x10000) >> 10));
            appendUnit(out, 0xDC00 + ((code - 0x10000) & 0x3FF));
        } else {
            appendUnit(out, code);
        }
    }
    return out;
}

std::string fromUtf16(std::string_view utf16) {
    std::string out;
    out.reserve(utf16.size());
    const auto unitAt = [&](size_t i) {
        return static_cast<uint32_t>(static_cast<unsigned char>(utf16[i])) | static_cast<uint32_t>(static_cast<unsigned char>(utf16[i + 1])) << 8;
    };
    for (size_t i = 0; i + 1 < utf16.size(); i += 2) {
        uint32_t code = unitAt(i);
        if (code >= 0xD800 && code < 0xDC00 && i + 3 < utf16.size() && unitAt(i + 2) >= 0xDC00 && unitAt(i + 2) < 0xE000) {
            code = 0x10000 + ((code - 0xD800) << 10) + (unitAt(i + 2) - 0xDC00);
            i += 2;
        } else if (code >= 0xD800 && code < 0xE000) {
            code = 0xFFFD;
        }
        appendUtf8(out, code);
    }
    return out;
}

}  // namespace tarvoke::net
