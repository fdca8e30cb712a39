#pragma once
// The player's event loop. The engine yields to it before every statement,
// so the cost of one QCoreApplication::processEvents() bounds the speed of a
// run: Qt's own Unix dispatcher handles an empty pass with about a tenth
// fewer instructions than the GLib one, and no part of the player needs GLib.

#include <optional>
#include <string>

namespace tarvoke::player {

// While it lives, an application object made gets Qt's Unix event
// dispatcher. Make the application inside its scope: programs the script
// starts later must not inherit the choice.
class UnixEventDispatcherChoice {
public:
    UnixEventDispatcherChoice();
    ~UnixEventDispatcherChoice();
    UnixEventDispatcherChoice(const UnixEventDispatcherChoice&) = delete;
    UnixEventDispatcherChoice& operator=(const UnixEventDispatcherChoice&) = delete;

private:
    std::optional<std::string> m_saved;
};

}  // namespace tarvoke::player
