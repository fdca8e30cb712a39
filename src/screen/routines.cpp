#include "screen/routines.h"

#include <cmath>

#include "engine/numeric.h"
#include "screen/colorsearch.h"
#include "screen/imagematch.h"
#include "screen/imagename.h"
#include "screen/saturation.h"

namespace tarvoke::screen {
namespace {

// A search's range: one that cannot be named is range 0.
ByteBox boxOf(const ColorRanges& ranges, const std::string& range) {
    const int i = rangeIndex(range).value_or(0);
    return byteBoxOf(ranges.colorRangeMin[i], ranges.colorRangeMax[i]);
}

// A number that cannot be read counts as 0.
double numberOr0(const std::string& text) { return engine::TextToDouble(text).value_or(0.0); }

}  // namespace

void LastPosition::note(Position p) const {
    if (p.x >= INT16_MIN && p.x <= INT16_MAX) x = static_cast<int16_t>(p.x);
    if (p.y >= INT16_MIN && p.y <= INT16_MAX) y = static_cast<int16_t>(p.y);
}

void CreateColorRange(ColorRanges& ranges, const std::string& range, const std::array<int16_t, 6>& values) {
    const auto i = rangeIndex(range);
    if (!i) return;
    ranges.colorRangeMin[*i] = {values[0], values[1], values[2]};
    ranges.colorRangeMax[*i] = {values[3], values[4], values[5]};
}

std::optional<Position> MoveMouseToColorRange(const ImageStore& store, const ColorRanges& ranges,
                                              const std::string& image, const std::string& range,
                                              std::optional<Area> area) {
    const ByteBox box = boxOf(ranges, range);
    const auto index = imageIndex(image);
    if (!index) return std::nullopt;
    const platform::PixelGrid* grid = store.image(*index);
    if (!grid) return std::nullopt;
    return findFirstInRange(*grid, box, area.value_or(wholeImage(*grid)));
}

bool FindPixelInArea(const ImageStore& store, const ColorRanges& ranges, const std::string& image,
                     const std::string& range, Area area, bool firstFind, LastPosition last) {
    const ByteBox box = boxOf(ranges, range);
    const auto index = imageIndex(image);
    if (!index) return false;
    const platform::PixelGrid* grid = store.image(*index);
    if (!grid) return false;
    const auto found = firstFind ? findFirstInRange(*grid, box, area) : findLastInRange(*grid, box, area);
    if (found) last.note(*found);
    return found.has_value();
}

bool TestSaturation(const ImageStore& store, const std::string& image, const std::string& value,
                    const std::string& tolerance, Area area, LastPosition last) {
    const auto index = imageIndex(image);
    if (!index) return false;
    const double t = std::fabs(numberOr0(tolerance));
    const double v = std::fabs(numberOr0(value));
    const double s = saturationOf(store.image(*index), area);
    if (!(v - t <= s && s <= v + t)) return false;
    last.note({area.x1, area.y1});
    return true;
}

double GetSaturation(const ImageStore& store, const std::string& image, Area area) {
    const auto index = imageIndex(image);
    if (!index) return 0.0;
    return saturationOf(store.image(*index), area);
}

bool FindImage(ImageStore& store, const std::string& image, const std::string& sub, const std::string& tolerance,
               Area area, bool firstFind, LastPosition last, const StopCheck& stopped) {
    const auto imageSlot = imageIndex(image);
    if (!imageSlot) return false;
    const auto subSlot = imageIndex(sub);
    if (!subSlot) return false;
    const MatchResult result =
        findImage(store.sums(*imageSlot), store.sums(*subSlot), numberOr0(tolerance), area, firstFind, stopped);
    if (result.match) last.note(*result.match);
    return result.found;
}

}  // namespace tarvoke::screen
