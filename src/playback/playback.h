#pragma once
// Playback: load a script, run it once or a number of times on one load, and
// stop. The windows, the player and the runtime all drive this one class.
//
// The windows drive it through a play timer: start() loads the script, hides
// the window and turns the timer on; each tick() is one whole run; stopPlay()
// ends it and brings the window back. A tick never nests in itself, and a
// start during a run replaces the run: the old tick ends without touching
// the new one.

#include <cstdint>
#include <string>

#include "engine/sc.h"
#include "host/session.h"

namespace tarvoke::playback {

// What the window in use does for a play.
class PlaybackView {
public:
    virtual ~PlaybackView() = default;
    // Hides the window; when this returns it is really unmapped, so that the
    // first click of the run cannot land on it.
    virtual void hideForRun() = 0;
    virtual void showAfterRun() = 0;
    // The play timer: on with an interval of 1 ms, or off.
    virtual void setPlayTimer(bool on) = 0;
    // The window's own steps of Stop after the timers (the Repeat mark).
    virtual void afterStop() {}
    // Basic Mode counts runs while "Play X amount of times" is selected.
    virtual bool playXSelected() const { return false; }
};

class Playback {
public:
    Playback(engine::SC& engine, host::Session& session) : m_engine(engine), m_session(session) {}

    // Loads a copy of the text; the caller's text stays as it is.
    void load(std::string scriptText, engine::SourceForm form = engine::SourceForm::Text);
    // Runs the loaded script count times (Play X), with the variables kept
    // between runs; a stop ends the run in hand and the rest.
    void run(int count = 1);
    // Stops the run: the engine ends after the statement in hand, and a wait
    // in progress is cut short.
    void stop();
    bool stopRequested() const { return m_stopRequested; }
    bool running() const { return m_running; }

    // --- Driven by the windows ---------------------------------------------
    void setView(PlaybackView* view) { m_view = view; }
    PlaybackView* view() const { return m_view; }

    // After a PauseScript the next Play only turns the timer back on: true
    // when that happened (the caller then does nothing more).
    bool resumeIfPending();
    // Loads script (the engine may rewrite it), clears the target window
    // when asked, hides the window and turns the play timer on.
    void start(std::string& script, bool clearTargetWindow);
    // Play X: the number of runs wanted; repeating is switched on.
    void setPlayTarget(int32_t target);
    // The play timer's tick: one whole run, then repeat, count or stop.
    void tick();
    // Stop of a window: ends the run, turns the timer off, shows the window,
    // and lets go of the keys and buttons the run left down.
    void stopPlay();
    // Ends the run in hand and makes the next Play resume instead of reload.
    void pauseScript();
    // The one run of Correct Time or White Debug mode: loads script with
    // the run's type and runs it once, inside the caller's tick.
    void runTimed(std::string& script, engine::ExecuteType type);

    bool resumePending() const { return m_resumePending; }
    bool inTick() const { return m_inTick; }
    int32_t playTarget() const { return m_playTarget; }
    int32_t playCount() const { return m_playCount; }

private:
    void releaseHeld();
    void claimStopKey(bool claimed);

    engine::SC& m_engine;
    host::Session& m_session;
    PlaybackView* m_view = nullptr;
    bool m_stopRequested = false;
    bool m_running = false;

    bool m_resumePending = false;
    int32_t m_playTarget = 0;
    int32_t m_playCount = 0;
    bool m_inTick = false;
    bool m_releaseDue = false;  // a stop inside the tick: release when it ends
    // Counts starts, so that a tick can tell that its run was replaced.
    uint64_t m_generation = 0;
};

}  // namespace tarvoke::playback
