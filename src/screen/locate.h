#pragma once
// Where a sub-image lies, compared over its own size: at each candidate
// position every pixel of a rectangle of the sub-image (its needle) is held
// against the image pixel under it, with the matching rule's verification
// window (tolerance + 1 brightness points on each side). Unlike findImage's
// walk, nothing beyond the needle takes part.

#include <optional>

#include "screen/area.h"
#include "screen/imagematch.h"
#include "screen/imagestore.h"

namespace tarvoke::screen {

// A rectangle of the sub-image: the whole of it for LocateImage; from pixel
// (1,1) on for the isimage rule, whose row 0 and column 0 take no part.
struct Needle {
    int32_t x = 0, y = 0, width = 0, height = 0;
    bool operator==(const Needle&) const = default;
};

// The first (firstFind) or last position in reading order of area at which
// the whole sub-image lies inside area and matches; the position is its
// top-left corner. None for an empty slot (null) or when it fits nowhere.
std::optional<Position> locateImage(const SumPlane* image, const SumPlane* sub, double tolerance, Area area,
                                    bool firstFind, const StopCheck& stopped = {});

// The candidate that would match with the least tolerance: the least of the
// largest colour-sum difference over the needle, the first in reading order
// among equals. Candidates are the positions of area (of the needle's first
// pixel) at which the needle lies on the image, and inside area as well
// when withinArea. None when there is no candidate, or on a stop.
struct Closest {
    Position at;
    int difference = 0;
};
std::optional<Closest> closestImage(const SumPlane& image, const SumPlane& sub, Needle needle, Area area,
                                    bool withinArea, const StopCheck& stopped = {});

}  // namespace tarvoke::screen
