#pragma once
// Saturation, the mean brightness of an area as a percentage of 256.

#include "screen/area.h"
#include "platform/pixelgrid.h"

namespace tarvoke::screen {

// The brightness of one pixel whose colour bytes add up to sum.
inline double brightnessOfSum(int sum) { return static_cast<double>(sum) / 3.0 / 256.0 * 100.0; }

// Computed from the exact integer sum of red + green + blue over the area.
// A position outside the image counts as a copy of the pixel read last in
// reading order (black before the first), so an empty slot (null) gives 0.
// An area that holds no position gives 0.
double saturationOf(const platform::PixelGrid* grid, Area area);

}  // namespace tarvoke::screen
