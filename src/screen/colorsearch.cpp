#include "screen/colorsearch.h"

#include <algorithm>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tarvoke::screen {
namespace {

constexpr size_t kChunk = 32;  // pixels tested between two branches

// Index of the first pixel of run[0..n) in the box, or n: the plain loop.
size_t scanPlain(const uint32_t* run, size_t n, const ByteBox& box) {
    for (size_t i = 0; i < n; ++i)
        if (inBox(box, run[i])) return i;
    return n;
}

#if defined(__x86_64__)
// Byte bounds for four pixels: blue, green, red, and byte 3 which any value passes.
struct LaneBounds {
    alignas(32) uint8_t lo[32];
    alignas(32) uint8_t hi[32];
    explicit LaneBounds(const ByteBox& box) {
        for (int i = 0; i < 32; i += 4) {
            lo[i] = box.blueLo, lo[i + 1] = box.greenLo, lo[i + 2] = box.redLo, lo[i + 3] = 0;
            hi[i] = box.blueHi, hi[i + 1] = box.greenHi, hi[i + 2] = box.redHi, hi[i + 3] = 0xFF;
        }
    }
};

// A byte v lies in [lo, hi] exactly when both saturating differences
// lo - v and v - hi are 0; a pixel is in the box when its word of those is 0.
__attribute__((target("avx2"))) inline __m256i hitsAvx2(const uint32_t* p, __m256i lo, __m256i hi) {
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i outside = _mm256_or_si256(_mm256_subs_epu8(lo, v), _mm256_subs_epu8(v, hi));
    return _mm256_cmpeq_epi32(outside, _mm256_setzero_si256());
}

__attribute__((target("avx2"))) size_t scanAvx2(const uint32_t* run, size_t n, const ByteBox& box) {
    const LaneBounds bounds(box);
    const __m256i lo = _mm256_load_si256(reinterpret_cast<const __m256i*>(bounds.lo));
    const __m256i hi = _mm256_load_si256(reinterpret_cast<const __m256i*>(bounds.hi));
    auto hits = [lo, hi](const uint32_t* p) __attribute__((target("avx2"))) { return hitsAvx2(p, lo, hi); };
    size_t i = 0;
    for (; i + kChunk <= n; i += kChunk) {
        const __m256i any = _mm256_or_si256(_mm256_or_si256(hits(run + i), hits(run + i + 8)),
                                            _mm256_or_si256(hits(run + i + 16), hits(run + i + 24)));
        if (!_mm256_testz_si256(any, any)) break;
    }
    return i + scanPlain(run + i, n - i, box);
}

size_t scanSse2(const uint32_t* run, size_t n, const ByteBox& box) {
    const LaneBounds bounds(box);
    const __m128i lo = _mm_load_si128(reinterpret_cast<const __m128i*>(bounds.lo));
    const __m128i hi = _mm_load_si128(reinterpret_cast<const __m128i*>(bounds.hi));
    const __m128i zero = _mm_setzero_si128();
    auto hits = [&](const uint32_t* p) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        return _mm_cmpeq_epi32(_mm_or_si128(_mm_subs_epu8(lo, v), _mm_subs_epu8(v, hi)), zero);
    };
    size_t i = 0;
    for (; i + 16 <= n; i += 16) {
        const __m128i any = _mm_or_si128(_mm_or_si128(hits(run + i), hits(run + i + 4)),
                                         _mm_or_si128(hits(run + i + 8), hits(run + i + 12)));
        if (_mm_movemask_epi8(any) != 0) break;
    }
    return i + scanPlain(run + i, n - i, box);
}

size_t scanRun(const uint32_t* run, size_t n, const ByteBox& box) {
    static const bool avx2 = __builtin_cpu_supports("avx2");
    return avx2 ? scanAvx2(run, n, box) : scanSse2(run, n, box);
}
#else
size_t scanRun(const uint32_t* run, size_t n, const ByteBox& box) { return scanPlain(run, n, box); }
#endif

// The area cut to the image; false when nothing of it lies there.
bool clip(const platform::PixelGrid& grid, Area& area) {
    area.x1 = std::max(area.x1, 0);
    area.y1 = std::max(area.y1, 0);
    area.x2 = std::min(area.x2, grid.width - 1);
    area.y2 = std::min(area.y2, grid.height - 1);
    return !area.isEmpty();
}

}  // namespace

std::optional<Position> findFirstInRange(const platform::PixelGrid& grid, const ByteBox& box, Area area) {
    if (!box.possible || grid.empty() || !clip(grid, area)) return std::nullopt;
    if (area.x1 == 0 && area.x2 == grid.width - 1) {
        // Whole rows lie next to each other in memory: one run over all of them.
        const size_t n = static_cast<size_t>(grid.width) * static_cast<size_t>(area.y2 - area.y1 + 1);
        const size_t i = scanRun(grid.row(area.y1), n, box);
        if (i == n) return std::nullopt;
        return Position{static_cast<int32_t>(i % grid.width), area.y1 + static_cast<int32_t>(i / grid.width)};
    }
    const size_t n = static_cast<size_t>(area.x2 - area.x1 + 1);
    for (int32_t y = area.y1; y <= area.y2; ++y) {
        const size_t i = scanRun(grid.row(y) + area.x1, n, box);
        if (i != n) return Position{area.x1 + static_cast<int32_t>(i), y};
    }
    return std::nullopt;
}

std::optional<Position> findLastInRange(const platform::PixelGrid& grid, const ByteBox& box, Area area) {
    if (!box.possible || grid.empty() || !clip(grid, area)) return std::nullopt;
    for (int32_t y = area.y2; y >= area.y1; --y) {
        const uint32_t* row = grid.row(y);
        for (int32_t x = area.x2; x >= area.x1; --x)
            if (inBox(box, row[x])) return Position{x, y};
    }
    return std::nullopt;
}

}  // namespace tarvoke::screen
