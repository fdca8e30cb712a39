#pragma once
// The screen: its size and a capture into a pixel grid.

#include "platform/types.h"
#include "platform/pixelgrid.h"

namespace tarvoke::platform {

class ScreenCapture {
public:
    virtual ~ScreenCapture() = default;
    virtual Size screenSize() = 0;
    // Fills grid with the whole screen; false when nothing could be read.
    virtual bool capture(PixelGrid& grid) = 0;
};

}  // namespace tarvoke::platform
