#pragma once
// Why a search found nothing, for the player's --explain: the place that
// came closest, where it first differs and by how much, and a picture of
// the searched part of the image with that place marked. Computed only
// after a miss; the searches themselves know nothing of it.

#include <optional>

#include "platform/pixelgrid.h"
#include "screen/area.h"
#include "screen/colorrange.h"
#include "screen/imagematch.h"
#include "screen/imagestore.h"
#include "screen/locate.h"

namespace tarvoke::screen {

// What a picture search compares at a candidate: isimage and isimageex the
// one pixel (1,1); isimageinarea and isimageinareaex the sub-image from
// (1,1), over its own size rather than to the area's far corner;
// LocateImage the whole sub-image.
enum class ImageWalk { Point, Area, Whole };

struct ImageMiss {
    enum class Reason { Closest, NoImage, NoSubImage, NoRoom, Stopped };
    Reason reason = Reason::NoRoom;
    Position best;              // as lx, ly would have noted it
    Area compared;              // the image pixels compared at best
    Area searched;              // what all candidates compare, on the image
    int64_t pixels = 0;         // how many are compared at best
    int64_t matched = 0;        // of them, in reading order, before the first mismatch
    std::optional<Position> mismatch;  // that pixel in the image; none when all matched
    double wanted = 0, found = 0;      // its brightness in the sub-image and in the image
    double tolerance = 0;       // the least tolerance, in hundredths, that matches all of compared
    bool walksOn = false;       // the area's walk from best runs on past the sub-image
};

ImageMiss explainImageMiss(const SumPlane* image, const SumPlane* sub, double tolerance, Area area, ImageWalk walk,
                           const StopCheck& stopped = {});

struct ColorMiss {
    enum class Reason { Closest, NoImage, NoRoom, NoColor };
    Reason reason = Reason::NoRoom;
    Position at;                // the nearest colour, first in reading order among equals
    uint32_t color = 0;
    int distance = 0;           // the most any of red, green, blue lies outside the range
};

// area none: the whole image.
ColorMiss explainColorMiss(const platform::PixelGrid* grid, const ByteBox& box, std::optional<Area> area);

// The shown part of grid, enlarged when small so that a pixel can be seen,
// with mark outlined in magenta round its outside and spot in yellow.
platform::PixelGrid markedPicture(const platform::PixelGrid& grid, Area shown, Area mark,
                                  std::optional<Position> spot);

}  // namespace tarvoke::screen
