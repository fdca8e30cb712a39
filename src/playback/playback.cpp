#include "playback/playback.h"

namespace tarvoke::playback {

void Playback::load(std::string scriptText) {
    m_engine.SetExecuteType(0);
    m_engine.Initialize(scriptText);
}

void Playback::run(int count) {
    m_stopRequested = false;
    m_running = true;
    for (int i = 0; i < count && !m_stopRequested; ++i) m_engine.Execute();
    m_running = false;
}

void Playback::stop() {
    m_stopRequested = true;
    m_engine.StopExecution();
    if (m_session.platform.clock) m_session.platform.clock->cancelWaits();
}

}  // namespace tarvoke::playback
