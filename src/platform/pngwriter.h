#pragma once
// PNG files written by us: 8-bit RGB, no interlace, compressed by zlib. For
// screenshots, which are mostly flat colour and would be large as bitmaps.

#include <string>
#include <vector>

#include "platform/pixelgrid.h"

namespace tarvoke::platform {

// The whole file in memory; empty when the grid is empty.
std::vector<uint8_t> encodePng(const PixelGrid& grid);

// Writes the picture beside path and renames it over, as saveBmpFile does.
// error receives the reason of a failure.
bool savePngFile(const std::string& path, const PixelGrid& grid, std::string& error);

}  // namespace tarvoke::platform
