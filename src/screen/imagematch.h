#pragma once
// Whether one image lies in another, compared by brightness.
//
// Each position of the area is a candidate for sub-image pixel (1,1). A
// filter on that one pixel (window T + 3 wide on each side) picks candidates;
// each is then verified over the walk from the candidate to the area's far
// corner (window T + 1). The walk does not stop at the sub-image's edge: a
// read outside an image keeps the value read last from that image (black
// before the first), so the sub-image's last pixels stand in for the rest.
// Row 0 and column 0 of the sub-image take no part.

#include <functional>
#include <optional>

#include "screen/area.h"
#include "screen/imagestore.h"

namespace tarvoke::screen {

struct MatchResult {
    // What the last candidate that passed the filter gave.
    bool found = false;
    // The last full match in reading order (the first one in first-find mode).
    std::optional<Position> match;
};

// Looked at every so many candidates: a search of a large area can take
// minutes, and a stop must not wait for it. A stopped search finds nothing.
using StopCheck = std::function<bool()>;

// image and sub are the sum planes of the two slots, null for an empty slot.
// tolerance keeps its sign. firstFind stops at the first full match.
MatchResult findImage(const SumPlane* image, const SumPlane* sub, double tolerance, Area area, bool firstFind,
                      const StopCheck& stopped = {});

// The same, read pixel by pixel the plain way. Kept as the statement of the
// rule that findImage must equal; findImage falls back to it for areas that
// reach outside the image.
MatchResult findImagePlainly(const SumPlane* image, const SumPlane* sub, double tolerance, Area area, bool firstFind,
                             const StopCheck& stopped = {});

}  // namespace tarvoke::screen
