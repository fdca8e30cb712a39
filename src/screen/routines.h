#pragma once
// The screen routines the image and colour commands call, on image slots and
// colour ranges as the commands decode them (an image slot that could not be
// named is empty). None reports a failure: an image that is not there makes
// a test false and a search do nothing.

#include <array>
#include <cstdint>
#include <optional>

#include "screen/area.h"
#include "screen/colorrange.h"
#include "screen/imagematch.h"
#include "screen/imagestore.h"
#include "screen/locate.h"

namespace tarvoke::screen {

using Slot = std::optional<int16_t>;

// Where scripts read the last find, as "lx" and "ly".
struct LastPosition {
    int16_t& x;
    int16_t& y;
    // Positions beyond 16 bits (pictures that wide) leave the coordinate as it was.
    void note(Position p) const;
};

// values: red, blue, green of the minimum, then of the maximum.
void createColorRange(ColorRanges& ranges, int range, const std::array<int16_t, 6>& values);

// The first pixel of the range in reading order, over the whole image or
// within area. The caller notes it and moves the cursor there.
std::optional<Position> firstInColorRange(const ImageStore& store, const ColorRanges& ranges, Slot image, int range,
                                          std::optional<Area> area = std::nullopt);

// A pixel of the range in area: the first (firstFind) or the last in reading order is noted.
bool findPixelInArea(const ImageStore& store, const ColorRanges& ranges, Slot image, int range, Area area,
                     bool firstFind, LastPosition last);

// Whether the saturation of area lies within |value| +- |tolerance|; notes (x1, y1) when it does.
bool testSaturation(const ImageStore& store, Slot image, double value, double tolerance, Area area,
                    LastPosition last);

double getSaturation(const ImageStore& store, Slot image, Area area);

// Whether sub lies in image with its pixel (1,1) at a position of area.
bool findSubImage(ImageStore& store, Slot image, Slot sub, double tolerance, Area area, bool firstFind,
                  LastPosition last, const StopCheck& stopped = {});

// Whether the whole of sub lies in image inside area, compared over its own
// size; notes its top-left corner, the first or (random find mode) the last
// in reading order.
bool locateSubImage(ImageStore& store, Slot image, Slot sub, double tolerance, Area area, bool firstFind,
                    LastPosition last, const StopCheck& stopped = {});

}  // namespace tarvoke::screen
