#include "screen/routines.h"

#include <cmath>

#include "screen/colorsearch.h"
#include "screen/imagematch.h"
#include "screen/saturation.h"

namespace tarvoke::screen {
namespace {

ByteBox boxOf(const ColorRanges& ranges, int range) {
    return byteBoxOf(ranges.colorRangeMin[range], ranges.colorRangeMax[range]);
}

}  // namespace

void LastPosition::note(Position p) const {
    if (p.x >= INT16_MIN && p.x <= INT16_MAX) x = static_cast<int16_t>(p.x);
    if (p.y >= INT16_MIN && p.y <= INT16_MAX) y = static_cast<int16_t>(p.y);
}

void createColorRange(ColorRanges& ranges, int range, const std::array<int16_t, 6>& values) {
    ranges.colorRangeMin[range] = {values[0], values[1], values[2]};
    ranges.colorRangeMax[range] = {values[3], values[4], values[5]};
}

std::optional<Position> firstInColorRange(const ImageStore& store, const ColorRanges& ranges, Slot image, int range,
                                          std::optional<Area> area) {
    const ByteBox box = boxOf(ranges, range);
    if (!image) return std::nullopt;
    const platform::PixelGrid* grid = store.image(*image);
    if (!grid) return std::nullopt;
    return findFirstInRange(*grid, box, area.value_or(wholeImage(*grid)));
}

bool findPixelInArea(const ImageStore& store, const ColorRanges& ranges, Slot image, int range, Area area,
                     bool firstFind, LastPosition last) {
    const ByteBox box = boxOf(ranges, range);
    if (!image) return false;
    const platform::PixelGrid* grid = store.image(*image);
    if (!grid) return false;
    const auto found = firstFind ? findFirstInRange(*grid, box, area) : findLastInRange(*grid, box, area);
    if (found) last.note(*found);
    return found.has_value();
}

bool testSaturation(const ImageStore& store, Slot image, double value, double tolerance, Area area,
                    LastPosition last) {
    if (!image) return false;
    const double t = std::fabs(tolerance);
    const double v = std::fabs(value);
    const double s = saturationOf(store.image(*image), area);
    if (!(v - t <= s && s <= v + t)) return false;
    last.note({area.x1, area.y1});
    return true;
}

double getSaturation(const ImageStore& store, Slot image, Area area) {
    if (!image) return 0.0;
    return saturationOf(store.image(*image), area);
}

bool findSubImage(ImageStore& store, Slot image, Slot sub, double tolerance, Area area, bool firstFind,
                  LastPosition last, const StopCheck& stopped) {
    if (!image || !sub) return false;
    const MatchResult result = findImage(store.sums(*image), store.sums(*sub), tolerance, area, firstFind, stopped);
    if (result.match) last.note(*result.match);
    return result.found;
}

bool locateSubImage(ImageStore& store, Slot image, Slot sub, double tolerance, Area area, bool firstFind,
                    LastPosition last, const StopCheck& stopped) {
    if (!image || !sub) return false;
    const auto found = locateImage(store.sums(*image), store.sums(*sub), tolerance, area, firstFind, stopped);
    if (found) last.note(*found);
    return found.has_value();
}

}  // namespace tarvoke::screen
