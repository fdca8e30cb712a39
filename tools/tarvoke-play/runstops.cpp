#include "runstops.h"

namespace tarvoke::player {

int signalStatus(int number) { return 128 + number; }

RunStops::RunStops(platform::EventLoop& loop, Desktop* desktop, host::Session& session, playback::Playback& playback)
    : m_desktop(desktop), m_playback(playback), m_signals(loop, [this](int number) {
          m_status = signalStatus(number);
          stop();
      }) {
    if (desktop) desktop->pollHotkeys([this] { stop(); });
    session.stopRequested = [desktop] { return StopSignals::count() != 0 || (desktop && desktop->stopKeysDown()); };
}

void RunStops::stop() {
    m_playback.stop();
    if (m_desktop) m_desktop->closeMessages();
}

int RunStops::status() const {
    // A signal that a long step saw may have come after the loop's last turn.
    if (m_status == 0 && StopSignals::count() != 0) return signalStatus(StopSignals::last());
    return m_status;
}

}  // namespace tarvoke::player
