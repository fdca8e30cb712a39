#include "screen/locate.h"

#include <cstdlib>
#include <vector>

#include "screen/sumwindows.h"

namespace tarvoke::screen {
namespace {

using namespace sums;

// The candidates (positions of the needle's first pixel) as a rectangle.
struct Candidates {
    int32_t x1 = 0, y1 = 0, lastX = 0, lastY = 0;
};

std::optional<Candidates> candidatesOf(const SumPlane& image, Needle needle, Area area, bool withinArea) {
    if (needle.width < 1 || needle.height < 1 || area.isEmpty()) return std::nullopt;
    Candidates c;
    c.x1 = std::max(area.x1, 0);
    c.y1 = std::max(area.y1, 0);
    // int64: an area near the 32-bit edge must not wrap round.
    int64_t lastX = int64_t{image.width} - needle.width, lastY = int64_t{image.height} - needle.height;
    if (withinArea) {
        lastX = std::min(lastX, int64_t{area.x2} - needle.width + 1);
        lastY = std::min(lastY, int64_t{area.y2} - needle.height + 1);
    } else {
        lastX = std::min<int64_t>(lastX, area.x2);
        lastY = std::min<int64_t>(lastY, area.y2);
    }
    if (lastX < c.x1 || lastY < c.y1) return std::nullopt;
    c.lastX = static_cast<int32_t>(lastX);
    c.lastY = static_cast<int32_t>(lastY);
    return c;
}

// One pixel of the needle: where it lies from the candidate's pixel in the
// image's memory, and its colour sum.
struct NeedlePixel {
    ptrdiff_t offset = 0;
    int32_t dx = 0, dy = 0;
    uint16_t sum = 0;
};

// The needle's pixels, those whose window holds the fewest pixels of the
// searched part of the image first: a false candidate then fails at its
// first comparisons, and the first pixel makes the best filter. The counts
// come from a sample of about 100,000 pixels.
std::vector<NeedlePixel> rarestFirst(const SumPlane& image, const SumPlane& sub, Needle needle, Candidates c,
                                     const VerifyWindows& windows) {
    std::array<uint32_t, kMaxSum + 2> upTo{};  // upTo[s + 1]: sampled sums <= s
    const int32_t right = c.lastX + needle.width - 1, bottom = c.lastY + needle.height - 1;
    const int32_t rowStep = std::max(1, (bottom - c.y1 + 1) / 64), columnStep = std::max(1, (right - c.x1 + 1) / 1600);
    for (int32_t y = c.y1; y <= bottom; y += rowStep) {
        const uint16_t* row = image.row(y);
        for (int32_t x = c.x1; x <= right; x += columnStep) ++upTo[row[x] + 1];
    }
    for (int s = 1; s <= kMaxSum + 1; ++s) upTo[s] += upTo[s - 1];
    std::vector<std::pair<uint32_t, NeedlePixel>> counted;
    counted.reserve(static_cast<size_t>(needle.width) * needle.height);
    for (int32_t dy = 0; dy < needle.height; ++dy) {
        const uint16_t* row = sub.row(needle.y + dy) + needle.x;
        for (int32_t dx = 0; dx < needle.width; ++dx) {
            const SumWindow w = windows[row[dx]];
            const uint32_t count = w.isEmpty() ? 0 : upTo[w.hi + 1] - upTo[w.lo];
            counted.push_back({count, {ptrdiff_t{dy} * image.width + dx, dx, dy, row[dx]}});
        }
    }
    std::stable_sort(counted.begin(), counted.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<NeedlePixel> pixels;
    pixels.reserve(counted.size());
    for (const auto& [count, pixel] : counted) pixels.push_back(pixel);
    return pixels;
}

// A needle pixel as the verification compares it: in the window when
// (sum - lo) wraps to at most span.
struct Probe {
    ptrdiff_t offset;
    uint16_t lo, span;
};

}  // namespace

std::optional<Position> locateImage(const SumPlane* image, const SumPlane* sub, double t, Area area, bool firstFind,
                                    const StopCheck& stopped) {
    if (!image || !sub || sub->width < 1 || sub->height < 1) return std::nullopt;
    const Needle needle{0, 0, sub->width, sub->height};
    const auto c = candidatesOf(*image, needle, area, true);
    if (!c) return std::nullopt;
    const VerifyWindows windows = verifyWindows(t);
    const std::vector<NeedlePixel> pixels = rarestFirst(*image, *sub, needle, *c, windows);
    std::vector<Probe> probes;
    probes.reserve(pixels.size());
    for (const NeedlePixel& p : pixels) {
        const SumWindow w = windows[p.sum];
        if (w.isEmpty()) return std::nullopt;  // a negative tolerance below -1 matches nothing
        probes.push_back({p.offset, static_cast<uint16_t>(w.lo), static_cast<uint16_t>(w.hi - w.lo)});
    }
    const NeedlePixel& anchor = pixels.front();
    const SumWindow anchorWindow = windows[anchor.sum];
    const auto matchesAt = [&](const uint16_t* at) {
        for (size_t k = 1; k < probes.size(); ++k)
            if (static_cast<uint16_t>(at[probes[k].offset] - probes[k].lo) > probes[k].span) return false;
        return true;
    };
    StopProbe stopNow(stopped);
    // The anchor's row is scanned for its window; each hit is a candidate.
    // Random find mode wants the last match: rows from the bottom, the
    // last hit of the first row that has one.
    const int32_t step = firstFind ? 1 : -1;
    for (int32_t Y = firstFind ? c->y1 : c->lastY; Y >= c->y1 && Y <= c->lastY; Y += step) {
        const uint16_t* anchorRow = image->row(Y + anchor.dy);
        const int32_t end = c->lastX + anchor.dx;
        std::optional<Position> lastInRow;
        for (int32_t x = nextIn(anchorRow, c->x1 + anchor.dx, end, anchorWindow); x <= end;
             x = nextIn(anchorRow, x + 1, end, anchorWindow)) {
            if (stopNow()) return std::nullopt;
            const int32_t X = x - anchor.dx;
            if (!matchesAt(image->row(Y) + X)) continue;
            if (firstFind) return Position{X, Y};
            lastInRow = Position{X, Y};
        }
        if (lastInRow) return lastInRow;
    }
    return std::nullopt;
}

std::optional<Closest> closestImage(const SumPlane& image, const SumPlane& sub, Needle needle, Area area,
                                    bool withinArea, const StopCheck& stopped) {
    const auto c = candidatesOf(image, needle, area, withinArea);
    if (!c) return std::nullopt;
    const std::vector<NeedlePixel> pixels = rarestFirst(image, sub, needle, *c, verifyWindows(0));
    const NeedlePixel& anchor = pixels.front();
    std::optional<Closest> best;
    int bound = kMaxSum + 1;  // a candidate must differ by less than this everywhere
    StopProbe stopNow(stopped);
    for (int32_t Y = c->y1; Y <= c->lastY && bound > 0; ++Y) {
        const uint16_t* anchorRow = image.row(Y + anchor.dy);
        const int32_t end = c->lastX + anchor.dx;
        for (int32_t x = c->x1 + anchor.dx; x <= end && bound > 0; ++x) {
            const SumWindow closer{std::max(0, anchor.sum - bound + 1), std::min(kMaxSum, anchor.sum + bound - 1)};
            x = nextIn(anchorRow, x, end, closer);
            if (x > end) break;
            if (stopNow()) return std::nullopt;
            const uint16_t* at = image.row(Y) + (x - anchor.dx);
            int largest = 0;
            for (const NeedlePixel& p : pixels) {
                largest = std::max(largest, std::abs(int{at[p.offset]} - int{p.sum}));
                if (largest >= bound) break;
            }
            if (largest >= bound) continue;
            bound = largest;
            best = Closest{{x - anchor.dx, Y}, largest};
        }
    }
    return best;
}

}  // namespace tarvoke::screen
