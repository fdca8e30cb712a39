#pragma once
// Message boxes of the script language, each shown by the helper program
// tarvoke-message beside the player: the player stays free of widgets, and
// a stopped run can close a box that is still open.

#include <sys/types.h>

#include <string>
#include <vector>

#include "platform/eventloop.h"
#include "platform/messagebox.h"

namespace tarvoke::player {

class HelperMessageBoxes : public platform::MessageBoxes {
public:
    // helper: the program that shows one box (tarvoke-message beside the
    // player when empty); marker: an environment entry added for it.
    explicit HelperMessageBoxes(platform::EventLoop& loop, std::string helper = {}, std::string marker = {});
    // Waits in the event loop until the box is closed, so that Ctrl+0 and
    // the stop signals are handled meanwhile. When the helper cannot start,
    // says so on standard error with the box's text, and returns.
    void show(uint32_t flags, const std::string& title, const std::string& text) override;
    // Closes every box still open.
    void closeAll();

private:
    pid_t startHelper(uint32_t flags, int socket);
    platform::EventLoop& m_loop;
    std::string m_helper;
    std::string m_marker;
    std::vector<pid_t> m_open;
};

}  // namespace tarvoke::player
