#pragma once
// A desktop-like picture for the screen benchmarks: a gradient background,
// windows with title bars and lines of text, and a photograph-like area of
// smooth noise. The same seed gives the same picture.

#include "platform/pixelgrid.h"

namespace tarvoke::bench {

platform::PixelGrid desktopPicture(int width, int height);
platform::PixelGrid cut(const platform::PixelGrid& from, int x, int y, int width, int height);

}  // namespace tarvoke::bench
