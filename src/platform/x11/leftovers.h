#pragma once
// What a run that was killed (SIGKILL, a crash) leaves on the X server, and
// the clean-up at the next start: keys and buttons that the XTest devices
// still hold down, and spare keycodes still bound to keysyms of the run.
//
// Spare keycodes in use are listed in a property of the root window, each
// with a window of the process that bound it. The X server destroys that
// window when the process ends however it ends, so an entry whose window is
// gone belongs to a process that could not unbind its keycodes.

#include "platform/x11/connection.h"

#include <utility>
#include <vector>

namespace tarvoke::platform::x11 {

// At start, before the keyboard map is read: lets go of every key and button
// that the XTest devices hold, and unbinds the spare keycodes of processes
// that are gone (where the keycode still carries what they bound).
void cleanUpAfterKilledRuns(Connection& x);

// The entries of this process in the list of bound spare keycodes.
class SpareKeycodeRecord {
public:
    explicit SpareKeycodeRecord(Connection& connection);
    ~SpareKeycodeRecord();
    SpareKeycodeRecord(const SpareKeycodeRecord&) = delete;
    SpareKeycodeRecord& operator=(const SpareKeycodeRecord&) = delete;

    // The keycodes this process has bound now, each with its keysym.
    void publish(const std::vector<std::pair<KeyCode, KeySym>>& bindings);

private:
    Connection& m_x;
    Window m_owner = 0;
    bool m_published = false;
};

}  // namespace tarvoke::platform::x11
