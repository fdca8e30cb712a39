#pragma once
// The screen is the X root window.

#include "platform/capture.h"
#include "platform/x11/connection.h"

namespace tarvoke::platform::x11 {

class X11Screen : public ScreenCapture {
public:
    explicit X11Screen(Connection& connection) : m_x(connection) {}
    Size screenSize() override;
    // A plain XGetImage of the root window.
    bool capture(screen::PixelGrid& grid) override;

private:
    Connection& m_x;
};

}  // namespace tarvoke::platform::x11
