#pragma once
// Colour ranges: boxes in colour space that the searches look for.

#include <array>
#include <cstdint>

namespace tarvoke::screen {

// The member order is red, blue, green, as scripts give the values.
struct ColorBound {
    int16_t Red = 0;
    int16_t Blue = 0;
    int16_t Green = 0;
    bool operator==(const ColorBound&) const = default;
};

// 51 ranges, of which scripts reach 0 to 9 by name. A range never created has
// all bounds 0 and so holds black alone. Min need not lie below max.
struct ColorRanges {
    static constexpr int kCount = 51;
    std::array<ColorBound, kCount> colorRangeMin{};
    std::array<ColorBound, kCount> colorRangeMax{};
};

// A range as inclusive byte intervals per colour. A bound beyond 0..255 is
// cut to it, which changes nothing since pixel bytes lie there; an interval
// left empty means no pixel can be in range.
struct ByteBox {
    uint8_t redLo = 0, redHi = 0, greenLo = 0, greenHi = 0, blueLo = 0, blueHi = 0;
    bool possible = true;
};

ByteBox byteBoxOf(const ColorBound& min, const ColorBound& max);

inline bool inBox(const ByteBox& box, uint32_t pixel) {
    const uint8_t r = (pixel >> 16) & 0xFF, g = (pixel >> 8) & 0xFF, b = pixel & 0xFF;
    return box.possible && r >= box.redLo && r <= box.redHi && g >= box.greenLo && g <= box.greenHi &&
           b >= box.blueLo && b <= box.blueHi;
}

}  // namespace tarvoke::screen
