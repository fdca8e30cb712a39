#include "screen/colorsearch.h"

#include <algorithm>
#include <cstring>

namespace tarvoke::screen {
namespace {

typedef uint8_t U8x16 __attribute__((vector_size(16)));
typedef uint32_t U32x4 __attribute__((vector_size(16)));
typedef uint64_t U64x2 __attribute__((vector_size(16)));

constexpr size_t kChunk = 16;  // pixels tested between two branches

struct VectorBox {
    U8x16 lo, hi;
};

VectorBox vectorBoxOf(const ByteBox& box) {
    VectorBox v{};
    for (int i = 0; i < 16; i += 4) {
        v.lo[i] = box.blueLo, v.lo[i + 1] = box.greenLo, v.lo[i + 2] = box.redLo, v.lo[i + 3] = 0;
        v.hi[i] = box.blueHi, v.hi[i + 1] = box.greenHi, v.hi[i + 2] = box.redHi, v.hi[i + 3] = 0xFF;
    }
    return v;
}

// All-ones in the 32-bit lane of every pixel of the four that is in the box.
inline U32x4 hits(const uint32_t* p, const VectorBox& box) {
    U8x16 v;
    std::memcpy(&v, p, sizeof v);
    const U8x16 outside = (U8x16)((v < box.lo) | (v > box.hi));
    return (U32x4)((U32x4)outside == 0);
}

// Index of the first pixel of run[0..n) in the box, or n.
size_t scanRun(const uint32_t* run, size_t n, const ByteBox& box, const VectorBox& vbox) {
    size_t i = 0;
    for (; i + kChunk <= n; i += kChunk) {
        const U32x4 any = hits(run + i, vbox) | hits(run + i + 4, vbox) | hits(run + i + 8, vbox) |
                          hits(run + i + 12, vbox);
        const U64x2 folded = (U64x2)any;
        if ((folded[0] | folded[1]) != 0) break;
    }
    for (; i < n; ++i)
        if (inBox(box, run[i])) return i;
    return n;
}

// The area cut to the image; false when nothing of it lies there.
bool clip(const PixelGrid& grid, Area& area) {
    area.x1 = std::max(area.x1, 0);
    area.y1 = std::max(area.y1, 0);
    area.x2 = std::min(area.x2, grid.width - 1);
    area.y2 = std::min(area.y2, grid.height - 1);
    return !area.isEmpty();
}

}  // namespace

std::optional<Position> findFirstInRange(const PixelGrid& grid, const ByteBox& box, Area area) {
    if (!box.possible || grid.empty() || !clip(grid, area)) return std::nullopt;
    const VectorBox vbox = vectorBoxOf(box);
    if (area.x1 == 0 && area.x2 == grid.width - 1) {
        // Whole rows lie next to each other in memory: one run over all of them.
        const size_t n = static_cast<size_t>(grid.width) * static_cast<size_t>(area.y2 - area.y1 + 1);
        const size_t i = scanRun(grid.row(area.y1), n, box, vbox);
        if (i == n) return std::nullopt;
        return Position{static_cast<int32_t>(i % grid.width), area.y1 + static_cast<int32_t>(i / grid.width)};
    }
    const size_t n = static_cast<size_t>(area.x2 - area.x1 + 1);
    for (int32_t y = area.y1; y <= area.y2; ++y) {
        const size_t i = scanRun(grid.row(y) + area.x1, n, box, vbox);
        if (i != n) return Position{area.x1 + static_cast<int32_t>(i), y};
    }
    return std::nullopt;
}

std::optional<Position> findLastInRange(const PixelGrid& grid, const ByteBox& box, Area area) {
    if (!box.possible || grid.empty() || !clip(grid, area)) return std::nullopt;
    for (int32_t y = area.y2; y >= area.y1; --y) {
        const uint32_t* row = grid.row(y);
        for (int32_t x = area.x2; x >= area.x1; --x)
            if (inBox(box, row[x])) return Position{x, y};
    }
    return std::nullopt;
}

}  // namespace tarvoke::screen
