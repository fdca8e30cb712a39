#include "app/playtimers.h"

#include <utility>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>
#include <QWindow>

#include "app/app.h"
#include "playback/hotkeys.h"

namespace tarvoke::app {

namespace {

// Long enough for any window manager to unmap the window; a bound, so that a
// display that never reports back cannot hold the start of a run.
constexpr int kUnmapWaitMs = 1000;
// Both the play timer and the hotkey poll tick every millisecond.
constexpr int kTickMs = 1;

}  // namespace

PlayTimers::PlayTimers(App& app, QWidget& window, HotkeyActions actions)
    : m_app(app), m_window(window), m_actions(std::move(actions)) {
    m_playTimer.setTimerType(Qt::PreciseTimer);
    m_hotkeyPoll.setTimerType(Qt::PreciseTimer);
    m_playTimer.setInterval(kTickMs);
    m_hotkeyPoll.setInterval(kTickMs);
    connect(&m_playTimer, &QTimer::timeout, this, [this] { m_app.playback.tick(); });
    connect(&m_hotkeyPoll, &QTimer::timeout, this, [this] { pollHotkeys(); });
}

void PlayTimers::setHotkeyPoll(bool on) {
    if (on)
        m_hotkeyPoll.start(kTickMs);
    else
        m_hotkeyPoll.stop();
}

void PlayTimers::setPlayTimer(bool on) {
    if (on)
        m_playTimer.start(kTickMs);
    else
        m_playTimer.stop();
}

void PlayTimers::hideForRun() {
    m_window.hide();
    QWindow* handle = m_window.windowHandle();
    if (!handle) return;
    // Waits for the display to report the window unmapped.
    QElapsedTimer waited;
    waited.start();
    while (handle->isExposed() && waited.elapsed() < kUnmapWaitMs) {
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        if (handle->isExposed()) QThread::msleep(1);
    }
}

void PlayTimers::showAfterRun() {
    m_window.show();
    m_window.raise();
    m_window.activateWindow();
}

void PlayTimers::afterStop() {
    if (onAfterStop) onAfterStop();
}

bool PlayTimers::playXSelected() const { return isPlayXSelected && isPlayXSelected(); }

void PlayTimers::pollHotkeys() {
    platform::KeyState* keys = m_app.keys();
    if (!keys) return;
    const auto fired = playback::pollHotkeys(
        *keys, {correctTimeTimerOn(), m_app.recorder.recording, std::exchange(m_app.session.stopKeysSeen, false)});
    for (playback::Hotkey hotkey : fired) {
        const std::function<void()>& action = hotkey == playback::Hotkey::Stop    ? m_actions.stop
                                              : hotkey == playback::Hotkey::Pause ? m_actions.pause
                                              : hotkey == playback::Hotkey::Record ? m_actions.record
                                                                                   : m_actions.play;
        if (action) action();
    }
}

}  // namespace tarvoke::app
