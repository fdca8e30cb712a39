#include "platform/x11/x11platform.h"

#include "platform/x11/leftovers.h"

namespace tarvoke::platform::x11 {

std::unique_ptr<X11Platform> X11Platform::open(EventLoop& loop) {
    std::unique_ptr<X11Platform> result(new X11Platform());
    result->m_connection = std::make_unique<Connection>(loop);
    if (!result->m_connection->ok()) return nullptr;
    Connection& x = *result->m_connection;
    cleanUpAfterKilledRuns(x);
    result->m_keyboard = std::make_unique<Keyboard>(x);
    result->m_keys = std::make_unique<X11KeyState>(x, *result->m_keyboard);
    result->m_clock = std::make_unique<RealClock>(loop);
    result->m_input = std::make_unique<X11Input>(x, *result->m_keyboard, *result->m_keys, *result->m_clock);
    result->m_windows = std::make_unique<X11Windows>(x);
    result->m_programs = std::make_unique<X11Programs>(*result->m_windows, loop);
    result->m_screen = std::make_unique<X11Screen>(x);
    return result;
}

Platform X11Platform::platform(MessageBoxes* messages) {
    Platform platform;
    platform.input = m_input.get();
    platform.keys = m_keys.get();
    platform.windows = m_windows.get();
    platform.programs = m_programs.get();
    platform.screen = m_screen.get();
    platform.clock = m_clock.get();
    platform.messages = messages;
    return platform;
}

}  // namespace tarvoke::platform::x11
