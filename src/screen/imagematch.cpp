#include "screen/imagematch.h"

#include <algorithm>

#include "screen/sumwindows.h"

namespace tarvoke::screen {
namespace {

using namespace sums;

// The walk of one candidate when every read of the image lies on it and the
// sub-image has a pixel (1,1). Sub-image reads past the right edge keep the
// row's last pixel; rows past the bottom keep the last pixel of the last row
// that the walk read, which is column min(n, width - 1).
class Verifier {
public:
    Verifier(const SumPlane& image, const SumPlane& sub, double t, Area area)
        : m_image(image), m_sub(sub), m_area(area), m_windows(verifyWindows(t)) {}

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
    VerifyWindows m_windows;
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
