#pragma once
// The real desktop for a run of the player: the X11 platform, message boxes
// shown by a helper program, and the hotkey poll that lets Ctrl+0 stop the
// run.

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <variant>

#include "messageboxes.h"
#include "platform/eventloop.h"
#include "platform/platform.h"

namespace tarvoke::platform::x11 {
class X11Platform;
}

namespace tarvoke::player {

// Whether a run needs the desktop, and the one line to say when it cannot
// have it; empty when it can.
std::string desktopProblem();
// The notice for a Wayland session, said once at start; empty elsewhere.
std::string waylandNotice();

class Desktop {
public:
    // nullptr when the display cannot be opened. The loop outlives the
    // desktop. Message boxes are shown by messageHelper, run with
    // messageMarker in its environment (HelperMessageBoxes).
    static std::unique_ptr<Desktop> open(platform::EventLoop& loop, std::string messageHelper = {},
                                         std::string messageMarker = {});
    ~Desktop();

    platform::Platform platform();
    // Polls the hotkeys every millisecond, also inside the run's yields and
    // pauses; onStop runs when Ctrl+0 is pressed.
    void pollHotkeys(std::function<void()> onStop);
    // One poll, for a caller with a timer of its own.
    void pollHotkeysOnce(const std::function<void()>& onStop);
    // Whether Ctrl+0 is held now, read without a turn of the loop.
    bool stopKeysDown();
    // Releases every key and button that the run pressed and did not release.
    void releaseAll();
    // The same for the desktop open now, if one is: for an end that cannot
    // unwind to its owner.
    static void releaseAllOfOpen();
    // Closes the message boxes of the run that are still open.
    void closeMessages() { m_messages.closeAll(); }

private:
    Desktop(platform::EventLoop& loop, std::string messageHelper, std::string messageMarker);
    platform::EventLoop& m_loop;
    std::unique_ptr<platform::x11::X11Platform> m_x11;
    HelperMessageBoxes m_messages;
    std::unique_ptr<platform::EventLoop::Handle> m_poll;
    std::chrono::steady_clock::time_point m_lastKeyRead;
    bool m_stopSeen = false;
};

}  // namespace tarvoke::player
