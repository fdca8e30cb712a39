#pragma once
// Message boxes of the script language, each shown by the helper program
// tarvoke-message beside the player: the player stays free of widgets, and
// a stopped run can close a box that is still open.

#include <sys/types.h>

#include <vector>

#include "platform/eventloop.h"
#include "platform/messagebox.h"

namespace tarvoke::player {

class HelperMessageBoxes : public platform::MessageBoxes {
public:
    explicit HelperMessageBoxes(platform::EventLoop& loop) : m_loop(loop) {}
    // Waits in the event loop until the box is closed, so that Ctrl+0 and
    // the stop signals are handled meanwhile. When the helper cannot start,
    // says so on standard error with the box's text, and returns.
    void show(uint32_t flags, const std::string& title, const std::string& text) override;
    // Closes every box still open.
    void closeAll();

private:
    platform::EventLoop& m_loop;
    std::vector<pid_t> m_open;
};

}  // namespace tarvoke::player
