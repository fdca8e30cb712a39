#include <cstddef>  // size_t in the pixel grid

#include "platform/x11/capture.h"

#include <X11/Xutil.h>

namespace tarvoke::platform::x11 {

Size X11Screen::screenSize() {
    const int screen = DefaultScreen(m_x.display());
    return {DisplayWidth(m_x.display(), screen), DisplayHeight(m_x.display(), screen)};
}

bool X11Screen::capture(screen::PixelGrid& grid) {
    const Size size = screenSize();
    XImage* image = nullptr;
    m_x.checked([&] {
        image = XGetImage(m_x.display(), m_x.root(), 0, 0, static_cast<unsigned>(size.width),
                          static_cast<unsigned>(size.height), AllPlanes, ZPixmap);
    });
    if (!image) return false;
    grid.resize(size.width, size.height);
    for (int32_t y = 0; y < size.height; ++y) {
        uint32_t* row = grid.row(y);
        for (int32_t x = 0; x < size.width; ++x) row[x] = static_cast<uint32_t>(XGetPixel(image, x, y)) & 0xFFFFFF;
    }
    XDestroyImage(image);
    return true;
}

}  // namespace tarvoke::platform::x11
