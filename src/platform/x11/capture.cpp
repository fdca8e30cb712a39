#include <cstddef>  // size_t in the pixel grid

#include "platform/x11/capture.h"


namespace tarvoke::platform::x11 {

Size X11Screen::screenSize() {
    const int screen = DefaultScreen(m_x.display());
    return {DisplayWidth(m_x.display(), screen), DisplayHeight(m_x.display(), screen)};
}

bool X11Screen::capture(PixelGrid& grid) {
    const Size size = screenSize();
    return m_shm.capture(grid, size.width, size.height);
}

}  // namespace tarvoke::platform::x11
