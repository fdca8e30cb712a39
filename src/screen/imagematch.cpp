#include "screen/imagematch.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "screen/saturation.h"

namespace tarvoke::screen {
namespace {

constexpr int kMaxSum = 765;

const std::array<double, kMaxSum + 1>& brightnessTable() {
    static const auto table = [] {
        std::array<double, kMaxSum + 1> t{};
        for (int s = 0; s <= kMaxSum; ++s) t[s] = brightnessOfSum(s);
        return t;
    }();
    return table;
}

// The colour sums whose brightness lies in [low, high]; lo > hi when none.
// Brightness grows with the sum, so they form one interval.
struct SumWindow {
    int lo = 0, hi = -1;
    bool holds(int sum) const { return sum >= lo && sum <= hi; }
};

SumWindow windowOf(double low, double high) {
    const auto& b = brightnessTable();
    const auto first = std::partition_point(b.begin(), b.end(), [&](double v) { return v < low; });
    const auto past = std::partition_point(b.begin(), b.end(), [&](double v) { return !(v > high); });
    return {static_cast<int>(first - b.begin()), static_cast<int>(past - b.begin()) - 1};
}

SumWindow filterWindow(double reference, double t) { return windowOf(reference - t - 3.0, reference + t + 3.0); }
SumWindow verifyWindow(double b, double t) { return windowOf(b - t - 1.0, b + t + 1.0); }

bool failsFilter(double c, double reference, double t) { return c < reference - t - 3.0 || c > reference + t + 3.0; }
bool failsVerify(double c, double b, double t) { return c < b - t - 1.0 || c > b + t + 1.0; }

typedef uint16_t U16x8 __attribute__((vector_size(16)));
typedef uint64_t U64x2 __attribute__((vector_size(16)));

inline U16x8 load8(const uint16_t* p) {
    U16x8 v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

inline bool anyLane(U16x8 mask) {
    const U64x2 folded = (U64x2)mask;
    return (folded[0] | folded[1]) != 0;
}

// The first x in [x, end] with row[x] in w (non-empty), or end + 1.
int32_t nextIn(const uint16_t* row, int32_t x, int32_t end, SumWindow w) {
    const uint16_t lo = static_cast<uint16_t>(w.lo), span = static_cast<uint16_t>(w.hi - w.lo);
    // Sums below lo wrap round to large numbers, so one compare tests both ends.
    for (; x + 16 <= end + 1; x += 16) {
        const U16x8 in = ((U16x8)(load8(row + x) - lo) <= span) | ((U16x8)(load8(row + x + 8) - lo) <= span);
        if (anyLane((U16x8)in)) break;
    }
    for (; x <= end; ++x)
        if (w.holds(row[x])) return x;
    return end + 1;
}

// True when every one of row[0..n) lies in w.
bool allIn(const uint16_t* row, int32_t n, SumWindow w) {
    if (w.lo > w.hi) return n == 0;
    const uint16_t lo = static_cast<uint16_t>(w.lo), span = static_cast<uint16_t>(w.hi - w.lo);
    int32_t k = 0;
    for (; k + 8 <= n; k += 8)
        if (anyLane((U16x8)((U16x8)(load8(row + k) - lo) > span))) return false;
    for (; k < n; ++k)
        if (!w.holds(row[k])) return false;
    return true;
}

// The walk of one candidate when every read of the image lies on it and the
// sub-image has a pixel (1,1). Sub-image reads past the right edge keep the
// row's last pixel; rows past the bottom keep the last pixel of the last row
// that the walk read, which is column min(n, width - 1).
class Verifier {
public:
    Verifier(const SumPlane& image, const SumPlane& sub, double t, Area area)
        : m_image(image), m_sub(sub), m_area(area) {
        const auto& b = brightnessTable();
        for (int s = 0; s <= kMaxSum; ++s) m_windows[s] = verifyWindow(b[s], t);
    }

    const SumWindow& windowFor(int sum) const { return m_windows[sum]; }

    bool matchesAt(int32_t X, int32_t Y) const {
        const int32_t n = m_area.x2 - X + 1;
        const int32_t sw = m_sub.width, sh = m_sub.height;
        for (int32_t v = Y; v <= m_area.y2; ++v) {
            const uint16_t* image = m_image.row(v) + X;
            const int32_t py = 1 + v - Y;
            if (py >= sh) {
                if (!allIn(image, n, m_windows[m_sub.row(sh - 1)[std::min(n, sw - 1)]])) return false;
                continue;
            }
            const uint16_t* sub = m_sub.row(py) + 1;
            const int32_t inSub = std::min(n, sw - 1);
            for (int32_t k = 0; k < inSub; ++k)
                if (!m_windows[sub[k]].holds(image[k])) return false;
            if (inSub < n && !allIn(image + inSub, n - inSub, m_windows[sub[inSub - 1]])) return false;
        }
        return true;
    }

private:
    const SumPlane& m_image;
    const SumPlane& m_sub;
    Area m_area;
    std::array<SumWindow, kMaxSum + 1> m_windows;
};

// One candidate's walk reads at most the area once; a look at the stop
// every 16 candidates costs nothing beside them.
class StopProbe {
public:
    explicit StopProbe(const StopCheck& stopped) : m_stopped(stopped) {}
    bool operator()() {
        if (!m_stopped || (++m_count & 15) != 0) return false;
        return m_stopped();
    }

private:
    const StopCheck& m_stopped;
    unsigned m_count = 0;
};

bool onImage(const SumPlane& image, Area area) {
    return area.x1 >= 0 && area.y1 >= 0 && area.x2 < image.width && area.y2 < image.height;
}

}  // namespace

MatchResult findImagePlainly(const SumPlane* image, const SumPlane* sub, double t, Area area, bool firstFind,
                             const StopCheck& stopped) {
    StopProbe stopNow(stopped);
    int imageLast = 0, subLast = 0;  // the sums read last from each image
    auto read = [](const SumPlane* plane, int64_t x, int64_t y, int& last) {
        if (plane && x >= 0 && y >= 0 && x < plane->width && y < plane->height)
            last = plane->row(static_cast<int32_t>(y))[x];
        return brightnessOfSum(last);
    };
    const double reference = read(sub, 1, 1, subLast);
    MatchResult result;
    for (int64_t Y = area.y1; Y <= area.y2; ++Y) {
        for (int64_t X = area.x1; X <= area.x2; ++X) {
            if (stopNow()) return {};
            if (failsFilter(read(image, X, Y, imageLast), reference, t)) continue;
            bool matched = true;
            int64_t px = 1, py = 1;
            for (int64_t v = Y; matched && v <= area.y2; ++v, px = 1, ++py) {
                for (int64_t u = X; u <= area.x2; ++u, ++px) {
                    const double b = read(sub, px, py, subLast);
                    if (failsVerify(read(image, u, v, imageLast), b, t)) {
                        matched = false;
                        break;
                    }
                }
            }
            result.found = matched;
            if (!matched) continue;
            result.match = Position{static_cast<int32_t>(X), static_cast<int32_t>(Y)};
            if (firstFind) return result;
        }
    }
    return result;
}

MatchResult findImage(const SumPlane* image, const SumPlane* sub, double t, Area area, bool firstFind,
                      const StopCheck& stopped) {
    if (area.isEmpty()) return {};
    if (!image || !sub || sub->width < 2 || sub->height < 2 || !onImage(*image, area))
        return findImagePlainly(image, sub, t, area, firstFind, stopped);
    StopProbe stopNow(stopped);

    const int reference = sub->row(1)[1];
    const Verifier verifier(*image, *sub, t, area);
    SumWindow candidates = filterWindow(brightnessTable()[reference], t);
    if (firstFind) {
        // Here a candidate that fails at its first pixel changes nothing, so
        // the first pixel's own verification window narrows the filter.
        const SumWindow first = verifier.windowFor(reference);
        candidates = {std::max(candidates.lo, first.lo), std::min(candidates.hi, first.hi)};
    }
    MatchResult result;
    if (candidates.lo > candidates.hi) return result;
    for (int32_t Y = area.y1; Y <= area.y2; ++Y) {
        const uint16_t* row = image->row(Y);
        for (int32_t X = nextIn(row, area.x1, area.x2, candidates); X <= area.x2;
             X = nextIn(row, X + 1, area.x2, candidates)) {
            if (stopNow()) return {};
            result.found = verifier.matchesAt(X, Y);
            if (!result.found) continue;
            result.match = Position{X, Y};
            if (firstFind) return result;
        }
    }
    return result;
}

}  // namespace tarvoke::screen
