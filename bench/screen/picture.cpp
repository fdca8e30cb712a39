#include "picture.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace tarvoke::bench {
namespace {

uint8_t clampByte(double v) { return static_cast<uint8_t>(std::clamp(v, 0.0, 255.0)); }

void fill(platform::PixelGrid& g, int x0, int y0, int w, int h, uint32_t pixel) {
    for (int y = std::max(y0, 0); y < std::min(y0 + h, g.height); ++y)
        for (int x = std::max(x0, 0); x < std::min(x0 + w, g.width); ++x) g.at(x, y) = pixel;
}

// Smooth noise: random values on a coarse lattice, interpolated.
void photo(platform::PixelGrid& g, int x0, int y0, int w, int h, std::mt19937& random) {
    const int step = 16;
    const int cols = w / step + 2, rows = h / step + 2;
    std::vector<double> lattice(static_cast<size_t>(cols) * rows * 3);
    for (auto& v : lattice) v = random() % 256;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const int cx = x / step, cy = y / step;
            const double fx = (x % step) / double(step), fy = (y % step) / double(step);
            uint8_t c[3];
            for (int k = 0; k < 3; ++k) {
                auto at = [&](int i, int j) { return lattice[(static_cast<size_t>(j) * cols + i) * 3 + k]; };
                const double top = at(cx, cy) * (1 - fx) + at(cx + 1, cy) * fx;
                const double bottom = at(cx, cy + 1) * (1 - fx) + at(cx + 1, cy + 1) * fx;
                c[k] = clampByte(top * (1 - fy) + bottom * fy + (random() % 9) - 4.0);
            }
            if (x0 + x < g.width && y0 + y < g.height) g.at(x0 + x, y0 + y) = platform::makePixel(c[0], c[1], c[2]);
        }
}

}  // namespace

platform::PixelGrid desktopPicture(int width, int height) {
    std::mt19937 random(2024);
    platform::PixelGrid g;
    g.resize(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            g.at(x, y) = platform::makePixel(clampByte(40 + y * 60.0 / height), clampByte(70 + x * 40.0 / width), 120);
    for (int i = 0; i < 14; ++i) {
        const int w = 300 + random() % 600, h = 200 + random() % 400;
        const int x = random() % (width - 200), y = random() % (height - 150);
        fill(g, x, y, w, h, platform::makePixel(236, 236, 236));
        fill(g, x, y, w, 28, platform::makePixel(48, 84, 150 + random() % 60));
        for (int line = y + 40; line + 12 < y + h; line += 18)
            for (int word = x + 10; word < x + w - 40;) {
                const int length = 10 + random() % 50;
                fill(g, word, line, std::min(length, x + w - 10 - word), 10, platform::makePixel(30, 30, 30 + random() % 40));
                word += length + 8;
            }
    }
    photo(g, width - 420, height - 300, 420, 300, random);  // takes in the bottom-right corner
    return g;
}

platform::PixelGrid cut(const platform::PixelGrid& from, int x0, int y0, int width, int height) {
    platform::PixelGrid g;
    g.resize(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) g.at(x, y) = from.at(x0 + x, y0 + y);
    return g;
}

}  // namespace tarvoke::bench
