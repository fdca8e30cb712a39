#pragma once
// Window look-ups compare class and title without regard to case, as the
// platform the scripts were written for did: an unquoted name, lower-cased
// when the script is loaded, still finds "XCalc".

#include <cstdint>
#include <string_view>

namespace tarvoke::platform {

namespace textcase {

// The next code point of UTF-8 text, folded to lower case for the Latin,
// Greek and Cyrillic letters that have one; a byte that starts no valid
// sequence stands for itself.
inline uint32_t nextFolded(std::string_view text, size_t& at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    uint32_t code = byte(at);
    size_t length = 1;
    if (code >= 0xC0 && code < 0xE0) code &= 0x1F, length = 2;
    else if (code >= 0xE0 && code < 0xF0) code &= 0x0F, length = 3;
    else if (code >= 0xF0 && code < 0xF8) code &= 0x07, length = 4;
    if (length > 1) {
        bool valid = at + length <= text.size();
        for (size_t i = 1; valid && i < length; ++i) valid = (byte(at + i) & 0xC0) == 0x80;
        if (!valid) {
            length = 1;
            code = byte(at);
        } else {
            for (size_t i = 1; i < length; ++i) code = (code << 6) | (byte(at + i) & 0x3F);
        }
    }
    at += length;
    if (code >= 'A' && code <= 'Z') return code + 32;
    if ((code >= 0xC0 && code <= 0xDE && code != 0xD7) || (code >= 0x391 && code <= 0x3AB) ||
        (code >= 0x410 && code <= 0x42F))
        return code + 32;
    if (code >= 0x400 && code <= 0x40F) return code + 80;
    // Latin Extended-A pairs its letters, upper case first, with the pairs
    // shifted by one between U+0139 and U+0148 and from U+0179 on.
    const bool oddUpper = (code >= 0x139 && code <= 0x148) || (code >= 0x179 && code <= 0x17E);
    const bool evenUpper = (code >= 0x100 && code <= 0x137 && code != 0x130) || (code >= 0x14A && code <= 0x177);
    if ((oddUpper && code % 2 == 1) || (evenUpper && code % 2 == 0)) return code + 1;
    if (code == 0x178) return 0xFF;
    return code;
}

}  // namespace textcase

inline bool equalIgnoringCase(std::string_view a, std::string_view b) {
    size_t i = 0, j = 0;
    while (i < a.size() && j < b.size())
        if (textcase::nextFolded(a, i) != textcase::nextFolded(b, j)) return false;
    return i == a.size() && j == b.size();
}

}  // namespace tarvoke::platform
