#include "screen/explain.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "screen/colorsearch.h"
#include "screen/sumwindows.h"

namespace tarvoke::screen {
namespace {

using sums::failsVerify;

Area clipped(Area area, int32_t width, int32_t height) {
    return {std::max(area.x1, 0), std::max(area.y1, 0), std::min(area.x2, width - 1), std::min(area.y2, height - 1)};
}

// The rectangle of the sub-image each walk compares from a candidate.
Needle needleOf(const SumPlane& sub, ImageWalk walk) {
    switch (walk) {
    case ImageWalk::Point: return {1, 1, 1, 1};
    case ImageWalk::Area: return {1, 1, sub.width - 1, sub.height - 1};
    case ImageWalk::Whole: break;
    }
    return {0, 0, sub.width, sub.height};
}

// Calls visit(b, c, x, y) for each pixel of the needle at `at`, in reading
// order, with the brightness of the sub-image's and the image's pixel,
// until it returns false.
template <typename Visit>
void walkNeedle(const SumPlane& image, const SumPlane& sub, Needle needle, Position at, Visit visit) {
    for (int32_t dy = 0; dy < needle.height; ++dy)
        for (int32_t dx = 0; dx < needle.width; ++dx) {
            const double b = brightnessOfSum(sub.row(needle.y + dy)[needle.x + dx]);
            const double c = brightnessOfSum(image.row(at.y + dy)[at.x + dx]);
            if (!visit(b, c, at.x + dx, at.y + dy)) return;
        }
}

int outside(int value, int lo, int hi) { return std::max({lo - value, value - hi, 0}); }

}  // namespace

ImageMiss explainImageMiss(const SumPlane* image, const SumPlane* sub, double t, Area area, ImageWalk walk,
                           const StopCheck& stopped) {
    ImageMiss miss;
    const int32_t least = walk == ImageWalk::Whole ? 1 : 2;  // the rule needs a pixel (1,1)
    if (!image) miss.reason = ImageMiss::Reason::NoImage;
    else if (!sub || sub->width < least || sub->height < least) miss.reason = ImageMiss::Reason::NoSubImage;
    if (miss.reason != ImageMiss::Reason::NoRoom) return miss;
    const Needle needle = needleOf(*sub, walk);
    const Area candidates = walk == ImageWalk::Point ? Area{area.x1, area.y1, area.x1, area.y1} : area;
    // Each candidate compares the needle from where it stands.
    Area searched = candidates;
    if (walk != ImageWalk::Whole) {
        searched.x2 = static_cast<int32_t>(std::min<int64_t>(INT32_MAX, int64_t{searched.x2} + needle.width - 1));
        searched.y2 = static_cast<int32_t>(std::min<int64_t>(INT32_MAX, int64_t{searched.y2} + needle.height - 1));
    }
    miss.searched = clipped(searched, image->width, image->height);
    const auto closest = closestImage(*image, *sub, needle, candidates, walk == ImageWalk::Whole, stopped);
    if (!closest) {
        if (stopped && stopped()) miss.reason = ImageMiss::Reason::Stopped;
        return miss;
    }
    miss.reason = ImageMiss::Reason::Closest;
    miss.best = closest->at;
    miss.compared = {miss.best.x, miss.best.y, miss.best.x + needle.width - 1, miss.best.y + needle.height - 1};
    miss.pixels = int64_t{needle.width} * needle.height;
    walkNeedle(*image, *sub, needle, miss.best, [&](double b, double c, int32_t x, int32_t y) {
        if (!failsVerify(c, b, t)) return ++miss.matched, true;
        miss.mismatch = Position{x, y};
        miss.wanted = b, miss.found = c;
        return false;
    });
    // The least whole hundredth at or above what the largest difference
    // needs, checked by the rule's own comparison, so that the figure shown
    // really matches.
    const double needed = brightnessOfSum(closest->difference) - 1.0;
    for (auto hundredths = static_cast<int64_t>(std::ceil(needed * 100.0 - 1e-6));; ++hundredths) {
        miss.tolerance = static_cast<double>(hundredths) / 100.0;
        bool all = true;
        walkNeedle(*image, *sub, needle, miss.best, [&](double b, double c, int32_t, int32_t) {
            return all = !failsVerify(c, b, miss.tolerance);
        });
        if (all) break;
    }
    miss.walksOn = walk == ImageWalk::Area && (area.x2 > miss.compared.x2 || area.y2 > miss.compared.y2);
    return miss;
}

ColorMiss explainColorMiss(const platform::PixelGrid* grid, const ByteBox& box, std::optional<Area> area) {
    ColorMiss miss;
    if (!grid || grid->empty()) miss.reason = ColorMiss::Reason::NoImage;
    else if (!box.possible) miss.reason = ColorMiss::Reason::NoColor;
    if (miss.reason != ColorMiss::Reason::NoRoom) return miss;
    const Area a = clipped(area.value_or(wholeImage(*grid)), grid->width, grid->height);
    int best = INT_MAX;
    for (int32_t y = a.y1; y <= a.y2 && best > 1; ++y) {
        const uint32_t* row = grid->row(y);
        for (int32_t x = a.x1; x <= a.x2; ++x) {
            const uint32_t p = row[x];
            const int d = std::max({outside(platform::redOf(p), box.redLo, box.redHi),
                                    outside(platform::greenOf(p), box.greenLo, box.greenHi),
                                    outside(platform::blueOf(p), box.blueLo, box.blueHi)});
            if (d >= best) continue;
            best = d;
            miss = {ColorMiss::Reason::Closest, {x, y}, p & 0xFFFFFFu, d};
            if (best <= 1) break;  // a miss is at least 1 away everywhere
        }
    }
    return miss;
}

platform::PixelGrid markedPicture(const platform::PixelGrid& grid, Area shown, Area mark,
                                  std::optional<Position> spot) {
    constexpr int32_t kMargin = 4;
    const Area crop = clipped({std::min(shown.x1, mark.x1) - kMargin, std::min(shown.y1, mark.y1) - kMargin,
                               std::max(shown.x2, mark.x2) + kMargin, std::max(shown.y2, mark.y2) + kMargin},
                              grid.width, grid.height);
    platform::PixelGrid out;
    if (crop.isEmpty()) return out;
    const int32_t w = crop.x2 - crop.x1 + 1, h = crop.y2 - crop.y1 + 1;
    const int32_t scale = std::clamp(160 / std::max(w, h), 1, 8);
    out.resize(w * scale, h * scale);
    for (int32_t y = 0; y < out.height; ++y) {
        const uint32_t* in = grid.row(crop.y1 + y / scale) + crop.x1;
        uint32_t* row = out.row(y);
        for (int32_t x = 0; x < out.width; ++x) row[x] = in[x / scale];
    }
    // A frame one pixel outside the cells of r, cut to the picture.
    const auto frame = [&](Area r, uint32_t color) {
        const int32_t left = (r.x1 - crop.x1) * scale - 1, right = (r.x2 - crop.x1 + 1) * scale;
        const int32_t top = (r.y1 - crop.y1) * scale - 1, bottom = (r.y2 - crop.y1 + 1) * scale;
        const auto put = [&](int32_t x, int32_t y) {
            if (x >= 0 && y >= 0 && x < out.width && y < out.height) out.at(x, y) = color;
        };
        for (int32_t x = left; x <= right; ++x) put(x, top), put(x, bottom);
        for (int32_t y = top; y <= bottom; ++y) put(left, y), put(right, y);
    };
    frame(mark, platform::makePixel(255, 0, 255));
    if (spot && !(mark.x1 == mark.x2 && mark.y1 == mark.y2))
        frame({spot->x, spot->y, spot->x, spot->y}, platform::makePixel(255, 255, 0));
    return out;
}

}  // namespace tarvoke::screen
