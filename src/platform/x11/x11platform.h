#pragma once
// Every role of the platform on the X display named by DISPLAY, sharing one
// connection, on the event loop the program runs. Message boxes are not
// here: the program supplies them (Qt widgets in the windows, a helper
// program for the player).

#include <memory>

#include "platform/platform.h"
#include "platform/x11/capture.h"
#include "platform/x11/clock.h"
#include "platform/x11/connection.h"
#include "platform/x11/input.h"
#include "platform/x11/keyboard.h"
#include "platform/x11/keystate.h"
#include "platform/x11/programs.h"
#include "platform/x11/windows.h"

namespace tarvoke::platform::x11 {

class X11Platform {
public:
    // nullptr when the display cannot be opened. The loop outlives the platform.
    static std::unique_ptr<X11Platform> open(EventLoop& loop);

    Platform platform(MessageBoxes* messages);
    X11Input& input() { return *m_input; }
    X11KeyState& keys() { return *m_keys; }
    Connection& connection() { return *m_connection; }

private:
    X11Platform() = default;

    // Declared in the order they are built; destroyed the other way round,
    // the connection last.
    std::unique_ptr<Connection> m_connection;
    std::unique_ptr<Keyboard> m_keyboard;
    std::unique_ptr<X11KeyState> m_keys;
    std::unique_ptr<RealClock> m_clock;
    std::unique_ptr<X11Input> m_input;
    std::unique_ptr<X11Windows> m_windows;
    std::unique_ptr<X11Programs> m_programs;
    std::unique_ptr<X11Screen> m_screen;
};

}  // namespace tarvoke::platform::x11
