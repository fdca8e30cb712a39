#include "eventloop.h"

#include <cstdlib>

namespace tarvoke::player {

// Qt reads QT_NO_GLIB once, when the application makes its dispatcher.
UnixEventDispatcherChoice::UnixEventDispatcherChoice() {
    if (const char* previous = std::getenv("QT_NO_GLIB")) m_saved = previous;
    setenv("QT_NO_GLIB", "1", 1);
}

UnixEventDispatcherChoice::~UnixEventDispatcherChoice() {
    if (m_saved) setenv("QT_NO_GLIB", m_saved->c_str(), 1);
    else unsetenv("QT_NO_GLIB");
}

}  // namespace tarvoke::player
