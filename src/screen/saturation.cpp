#include "screen/saturation.h"

#include <algorithm>
#include <cstring>

namespace tarvoke::screen {
namespace {

typedef uint32_t U32x4 __attribute__((vector_size(16)));

inline uint32_t sumOf(uint32_t p) { return (p & 0xFF) + ((p >> 8) & 0xFF) + ((p >> 16) & 0xFF); }

// Red + green + blue over n pixels.
uint64_t rowSum(const uint32_t* p, size_t n) {
    uint64_t total = 0;
    size_t i = 0;
    while (i + 4 <= n) {
        // Each lane gathers at most 765 per step: flush before 2^32 can be reached.
        const size_t end = std::min(n, i + (size_t{1} << 20) * 4) & ~size_t{3};
        U32x4 acc = {0, 0, 0, 0};
        for (; i < end; i += 4) {
            U32x4 v;
            std::memcpy(&v, p + i, sizeof v);
            acc += (v & 0xFF) + ((v >> 8) & 0xFF) + ((v >> 16) & 0xFF);
        }
        total += uint64_t{acc[0]} + acc[1] + acc[2] + acc[3];
    }
    for (; i < n; ++i) total += sumOf(p[i]);
    return total;
}

}  // namespace

double saturationOf(const platform::PixelGrid* grid, Area area) {
    if (area.isEmpty()) return 0.0;
    const int64_t width = int64_t{area.x2} - area.x1 + 1;
    const int64_t count = width * (int64_t{area.y2} - area.y1 + 1);
    const bool hasImage = grid && !grid->empty();
    const int32_t w = hasImage ? grid->width : 0, h = hasImage ? grid->height : 0;
    // The part of each row that lies on the image.
    const int32_t xa = std::max(area.x1, 0), xb = std::min(area.x2, w - 1);
    const int64_t inside = xb >= xa ? int64_t{xb} - xa + 1 : 0;
    const int64_t left = std::max<int64_t>(0, int64_t{std::min(area.x2, -1)} - area.x1 + 1);
    const int64_t right = width - inside - left;

    uint64_t total = 0;
    uint64_t last = 0;  // the sum of the pixel read last
    for (int64_t y = area.y1; y <= area.y2; ++y) {
        if (y < 0 || y >= h || inside == 0) {
            total += last * static_cast<uint64_t>(width);
            continue;
        }
        const uint32_t* row = grid->row(static_cast<int32_t>(y));
        total += last * static_cast<uint64_t>(left);
        total += rowSum(row + xa, static_cast<size_t>(inside));
        last = sumOf(row[xb]);
        total += last * static_cast<uint64_t>(right);
    }
    return static_cast<double>(total) / 3.0 / static_cast<double>(count) / 256.0 * 100.0;
}

}  // namespace tarvoke::screen
