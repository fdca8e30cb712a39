#pragma once
// What stops a run of the player and of a compiled program: SIGINT and
// SIGTERM (status 128 + the signal), and Ctrl+0 on the desktop (status 0).
// A stopped run does not wait for a message box left open, and a long step
// sees a stop before the loop's next turn does.

#include "desktop.h"
#include "host/session.h"
#include "playback/playback.h"
#include "signals.h"

namespace tarvoke::player {

int signalStatus(int number);

class RunStops {
public:
    RunStops(platform::EventLoop& loop, Desktop* desktop, host::Session& session, playback::Playback& playback);
    void stop();
    // The run's exit status so far, with a signal that only a long step saw.
    int status() const;

private:
    Desktop* m_desktop;
    playback::Playback& m_playback;
    int m_status = 0;
    StopSignals m_signals;
};

}  // namespace tarvoke::player
