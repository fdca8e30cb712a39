#pragma once
// A desktop-like picture for the screen benchmarks: a gradient background,
// windows with title bars and lines of text, and a photograph-like area of
// smooth noise. The same seed gives the same picture.

#include "screen/pixelgrid.h"

namespace tarvoke::bench {

screen::PixelGrid desktopPicture(int width, int height);
screen::PixelGrid cut(const screen::PixelGrid& from, int x, int y, int width, int height);

}  // namespace tarvoke::bench
