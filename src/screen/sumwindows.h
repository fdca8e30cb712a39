#pragma once
// What the picture searches share: brightness as a function of the colour
// sum, the matching rule's brightness windows turned into exact ranges of
// sums, vector scans of a row of sums, and the look at a pending stop.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "screen/imagematch.h"
#include "screen/saturation.h"

namespace tarvoke::screen::sums {

constexpr int kMaxSum = 765;

inline const std::array<double, kMaxSum + 1>& brightnessTable() {
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
    bool isEmpty() const { return lo > hi; }
};

inline SumWindow windowOf(double low, double high) {
    const auto& b = brightnessTable();
    const auto first = std::partition_point(b.begin(), b.end(), [&](double v) { return v < low; });
    const auto past = std::partition_point(b.begin(), b.end(), [&](double v) { return !(v > high); });
    return {static_cast<int>(first - b.begin()), static_cast<int>(past - b.begin()) - 1};
}

inline SumWindow filterWindow(double reference, double t) { return windowOf(reference - t - 3.0, reference + t + 3.0); }
inline SumWindow verifyWindow(double b, double t) { return windowOf(b - t - 1.0, b + t + 1.0); }

inline bool failsFilter(double c, double reference, double t) {
    return c < reference - t - 3.0 || c > reference + t + 3.0;
}
inline bool failsVerify(double c, double b, double t) { return c < b - t - 1.0 || c > b + t + 1.0; }

// The verification window of every sub-image sum, for one tolerance.
using VerifyWindows = std::array<SumWindow, kMaxSum + 1>;
inline VerifyWindows verifyWindows(double t) {
    VerifyWindows windows;
    const auto& b = brightnessTable();
    for (int s = 0; s <= kMaxSum; ++s) windows[s] = verifyWindow(b[s], t);
    return windows;
}

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
inline int32_t nextIn(const uint16_t* row, int32_t x, int32_t end, SumWindow w) {
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
inline bool allIn(const uint16_t* row, int32_t n, SumWindow w) {
    if (w.lo > w.hi) return n == 0;
    const uint16_t lo = static_cast<uint16_t>(w.lo), span = static_cast<uint16_t>(w.hi - w.lo);
    int32_t k = 0;
    for (; k + 8 <= n; k += 8)
        if (anyLane((U16x8)((U16x8)(load8(row + k) - lo) > span))) return false;
    for (; k < n; ++k)
        if (!w.holds(row[k])) return false;
    return true;
}

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

}  // namespace tarvoke::screen::sums
