#pragma once
// Windows bitmaps written by us: 24 bits a pixel, uncompressed, bottom-up rows.

#include <string>
#include <vector>

#include "platform/pixelgrid.h"

namespace tarvoke::platform {

// The whole file in memory; empty when the grid is empty or too large for the format.
std::vector<uint8_t> encodeBmp(const PixelGrid& grid);

// Writes the bitmap beside path and renames it over, so that a failed save
// leaves a file already at path as it was. error receives the reason.
bool saveBmpFile(const std::string& path, const PixelGrid& grid, std::string& error);

}  // namespace tarvoke::platform
