#pragma once
// Picture files: read into a pixel grid, written as Windows bitmaps (what
// scripts save) or as PNG (pictures for a person to look at).

#include <string>

#include "platform/pixelgrid.h"

namespace tarvoke::platform {

class Pictures {
public:
    virtual ~Pictures() = default;
    // Reads the picture at path into grid; false when the file is missing or
    // no picture that can be read (grid is then left empty).
    virtual bool load(const std::string& path, PixelGrid& grid) = 0;
    // Writes grid to path as a bitmap, whatever the extension; on failure a
    // file already at path stays as it was.
    virtual bool save(const std::string& path, const PixelGrid& grid) = 0;
    // Writes grid to path as PNG, beside and renamed over as save does: the
    // same file for every implementation that writes to disk.
    virtual bool savePng(const std::string& path, const PixelGrid& grid);
};

}  // namespace tarvoke::platform
