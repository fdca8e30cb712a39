#pragma once
// A picture as capture, picture files and the screen commands see it.
//
// Contract: width x height pixels, row-major, (0, 0) top left, no padding
// between rows. Each pixel is one 32-bit word: blue in byte 0, green in
// byte 1, red in byte 2, byte 3 unused. An empty grid (0 x 0) is an empty slot.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarvoke::platform {

struct PixelGrid {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint32_t> pixels;  // width * height words

    bool empty() const { return width <= 0 || height <= 0; }
    void resize(int32_t w, int32_t h) {
        width = w;
        height = h;
        pixels.assign(static_cast<size_t>(w) * static_cast<size_t>(h), 0);
    }
    uint32_t at(int32_t x, int32_t y) const { return pixels[static_cast<size_t>(y) * width + x]; }
    uint32_t& at(int32_t x, int32_t y) { return pixels[static_cast<size_t>(y) * width + x]; }
    const uint32_t* row(int32_t y) const { return pixels.data() + static_cast<size_t>(y) * width; }
    uint32_t* row(int32_t y) { return pixels.data() + static_cast<size_t>(y) * width; }
};

inline uint8_t blueOf(uint32_t pixel) { return pixel & 0xFF; }
inline uint8_t greenOf(uint32_t pixel) { return (pixel >> 8) & 0xFF; }
inline uint8_t redOf(uint32_t pixel) { return (pixel >> 16) & 0xFF; }
inline uint32_t makePixel(uint8_t red, uint8_t green, uint8_t blue) {
    return uint32_t{blue} | (uint32_t{green} << 8) | (uint32_t{red} << 16);
}

}  // namespace tarvoke::platform
