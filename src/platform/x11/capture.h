#pragma once
// The screen is the X root window.

#include "platform/capture.h"
#include "platform/x11/connection.h"
#include "platform/x11/xshmcapture.h"

namespace tarvoke::platform::x11 {

class X11Screen : public ScreenCapture {
public:
    explicit X11Screen(Connection& connection) : m_x(connection), m_shm(connection) {}
    Size screenSize() override;
    // The root window through shared memory, else a plain XGetImage.
    bool capture(PixelGrid& grid) override;

private:
    Connection& m_x;
    XShmCapture m_shm;
};

}  // namespace tarvoke::platform::x11
