#include "playback/playback.h"

namespace tarvoke::playback {

void Playback::load(std::string scriptText, engine::SourceForm form) {
    m_engine.setExecuteType(engine::ExecuteType::Play);
    m_engine.initialize(scriptText, form);
}

void Playback::run(int count) {
    m_stopRequested = false;
    m_running = true;
    claimStopKey(true);
    for (int i = 0; i < count && !m_stopRequested; ++i) m_engine.execute();
    claimStopKey(false);
    m_running = false;
}

void Playback::stop() {
    m_stopRequested = true;
    m_engine.stopExecution();
    if (m_session.platform.clock) m_session.platform.clock->cancelWaits();
}

bool Playback::resumeIfPending() {
    if (!m_resumePending) return false;
    claimStopKey(true);
    if (m_view) m_view->setPlayTimer(true);
    m_resumePending = false;
    return true;
}

void Playback::start(std::string& script, bool clearTargetWindow) {
    ++m_generation;
    m_engine.setExecuteType(engine::ExecuteType::Play);
    m_engine.initialize(script);
    if (clearTargetWindow) m_session.targetWindow = 0;
    if (m_view) m_view->hideForRun();
    claimStopKey(true);
    if (m_view) m_view->setPlayTimer(true);
}

void Playback::setPlayTarget(int32_t target) {
    m_playTarget = target;
    m_playCount = 0;
    m_session.repeat = true;
}

void Playback::tick() {
    if (m_inTick) return;
    m_inTick = true;
    const uint64_t generation = m_generation;
    m_engine.execute();
    m_inTick = false;
    if (m_releaseDue) {
        m_releaseDue = false;
        releaseHeld();
    }
    // A start inside the run has replaced it; the new run begins at the next tick.
    if (generation != m_generation) return;
    if (!m_session.repeat) {
        stopPlay();
    } else if (m_view && m_view->playXSelected()) {
        ++m_playCount;
        if (m_playCount >= m_playTarget) stopPlay();
    }
}

void Playback::stopPlay() {
    stop();
    claimStopKey(false);
    // A run in hand may still press a key in the statement it is in (the
    // engine ends after it): its keys are let go when its tick ends.
    if (m_inTick) m_releaseDue = true;
    else releaseHeld();
    if (!m_view) return;
    m_view->setPlayTimer(false);
    m_view->afterStop();
    m_view->showAfterRun();
}

// While a run is active, the stop key reaches no application.
void Playback::claimStopKey(bool claimed) {
    if (m_session.platform.keys) m_session.platform.keys->claimStopKey(claimed);
}

// Keys and buttons a stopped run left down would stay down on the desktop.
void Playback::releaseHeld() {
    if (m_session.platform.input) m_session.platform.input->releaseAll();
}

void Playback::runTimed(std::string& script, engine::ExecuteType type) {
    ++m_generation;
    m_resumePending = false;  // a new load: nothing is left to resume
    m_engine.setExecuteType(type);
    m_engine.initialize(script);
    run();
    // Ctrl+1 keeps the run for the next Play, keys and all.
    if (!m_resumePending) releaseHeld();
}

void Playback::pauseScript() {
    if (m_view) m_view->setPlayTimer(false);
    claimStopKey(false);
    m_engine.pauseExecution();
    if (m_session.platform.clock) m_session.platform.clock->cancelWaits();
    m_resumePending = true;
}

}  // namespace tarvoke::playback
