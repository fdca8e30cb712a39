#pragma once
// Playback: load a script, run it once or a number of times on one load, and
// stop. The windows, the player and the runtime all drive this one class.

#include <string>

#include "engine/sc.h"
#include "host/session.h"

namespace tarvoke::playback {

class Playback {
public:
    Playback(engine::SC& engine, host::Session& session) : m_engine(engine), m_session(session) {}

    // Loads a copy of the text; the caller's text stays as it is.
    void load(std::string scriptText);
    // Runs the loaded script count times (Play X), with the variables kept
    // between runs; a stop ends the run in hand and the rest.
    void run(int count = 1);
    // Stops the run: the engine ends after the statement in hand, and a wait
    // in progress is cut short.
    void stop();
    bool stopRequested() const { return m_stopRequested; }
    bool running() const { return m_running; }

private:
    engine::SC& m_engine;
    host::Session& m_session;
    bool m_stopRequested = false;
    bool m_running = false;
};

}  // namespace tarvoke::playback
