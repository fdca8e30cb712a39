#pragma once
// The screen routines the image and colour commands call, on texts as the
// commands resolve them. None reports a failure: a text that is no image
// name makes a test false and a search do nothing.

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "screen/area.h"
#include "screen/colorrange.h"
#include "screen/imagematch.h"
#include "screen/imagestore.h"

namespace tarvoke::screen {

// Where scripts read the last find, as "lx" and "ly".
struct LastPosition {
    int16_t& x;
    int16_t& y;
    // Positions beyond 16 bits (pictures that wide) leave the coordinate as it was.
    void note(Position p) const;
};

// values: red, blue, green of the minimum, then of the maximum.
void CreateColorRange(ColorRanges& ranges, const std::string& range, const std::array<int16_t, 6>& values);

// The first pixel of the range in reading order, over the whole image or
// within area. The caller notes it and moves the cursor there.
std::optional<Position> MoveMouseToColorRange(const ImageStore& store, const ColorRanges& ranges,
                                              const std::string& image, const std::string& range,
                                              std::optional<Area> area = std::nullopt);

// A pixel of the range in area: the first (firstFind) or the last in reading order is noted.
bool FindPixelInArea(const ImageStore& store, const ColorRanges& ranges, const std::string& image,
                     const std::string& range, Area area, bool firstFind, LastPosition last);

// Whether the saturation of area lies within |value| +- |tolerance|; notes (x1, y1) when it does.
bool TestSaturation(const ImageStore& store, const std::string& image, const std::string& value,
                    const std::string& tolerance, Area area, LastPosition last);

double GetSaturation(const ImageStore& store, const std::string& image, Area area);

// Whether sub lies in image with its pixel (1,1) at a position of area.
bool FindImage(ImageStore& store, const std::string& image, const std::string& sub, const std::string& tolerance,
               Area area, bool firstFind, LastPosition last, const StopCheck& stopped = {});

}  // namespace tarvoke::screen
