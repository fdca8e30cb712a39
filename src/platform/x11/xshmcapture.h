#pragma once
// Screen capture through the MIT shared-memory extension: the server writes
// the root window straight into a segment that is kept and reused from one
// capture to the next. Falls back to a plain XGetImage where the extension
// is missing or refused (a remote display).

#include "platform/x11/connection.h"
#include "platform/pixelgrid.h"

struct _XImage;

namespace tarvoke::platform::x11 {

class XShmCapture {
public:
    explicit XShmCapture(Connection& connection) : m_x(connection) {}
    ~XShmCapture();
    XShmCapture(const XShmCapture&) = delete;
    XShmCapture& operator=(const XShmCapture&) = delete;

    // Fills grid with the whole root window, at the screen's size.
    bool capture(PixelGrid& grid, int width, int height);

private:
    bool attach(int width, int height);
    void detach();
    bool captureShared(PixelGrid& grid);
    bool capturePlain(PixelGrid& grid, int width, int height);

    Connection& m_x;
    bool m_unavailable = false;  // the extension is missing or was refused once
    _XImage* m_image = nullptr;
    struct Segment;
    Segment* m_segment = nullptr;
};

}  // namespace tarvoke::platform::x11
