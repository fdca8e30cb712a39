#pragma once
// Searches for a pixel of a colour range. Positions outside the image are
// never in range, so only the part of the area that lies on the image is read.

#include <optional>

#include "screen/area.h"
#include "screen/colorrange.h"
#include "platform/pixelgrid.h"

namespace tarvoke::screen {

// The first pixel in range in reading order (top row first, left to right).
std::optional<Position> findFirstInRange(const platform::PixelGrid& grid, const ByteBox& box, Area area);
// The last one in reading order: the lowest row that has one, right-most there.
std::optional<Position> findLastInRange(const platform::PixelGrid& grid, const ByteBox& box, Area area);

inline Area wholeImage(const platform::PixelGrid& grid) { return {0, 0, grid.width - 1, grid.height - 1}; }

}  // namespace tarvoke::screen
