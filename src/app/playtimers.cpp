#include "app/playtimers.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>
#include <QWindow>

#include "app/app.h"

namespace tarvoke::app {

namespace {

// Long enough for any window manager to unmap the window; a bound, so that a
// display that never reports back cannot hold the start of a run.
constexpr int kUnmapWaitMs = 1000;

}  // namespace

PlayTimers::PlayTimers(App& app, QWidget& window, HotkeyActions actions)
    : m_app(app), m_window(window), m_actions(std::move(actions)) {
    m_tmrPlay.setTimerType(Qt::PreciseTimer);
    m_tmrInputs.setTimerType(Qt::PreciseTimer);
    m_tmrPlay.setInterval(1);
    m_tmrInputs.setInterval(1);
    connect(&m_tmrPlay, &QTimer::timeout, this, [this] { m_app.playback.tick(); });
    connect(&m_tmrInputs, &QTimer::timeout, this, [this] { pollHotkeys(); });
}

void PlayTimers::setInputsTimer(bool on) {
    if (on)
        m_tmrInputs.start(1);
    else
        m_tmrInputs.stop();
}

void PlayTimers::setPlayTimer(bool on) {
    if (on)
        m_tmrPlay.start(1);
    else
        m_tmrPlay.stop();
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
    if (!keys || !keys->isDown(17)) return;
    // Each test reads the key's "pressed since the last read" bit, so a key
    // held down acts once. All four are tested in every tick.
    auto pressed = [&](uint8_t vk) { return keys->pressedSinceLastRead(vk) && keys->isDown(vk); };
    if (pressed(48) && m_actions.stop) m_actions.stop();
    if (pressed(49) && correctTimeTimerOn() && m_actions.pause) m_actions.pause();
    if (pressed(56) && !m_app.bRecording && m_actions.record) m_actions.record();
    if (pressed(57) && !m_app.bRecording && m_actions.play) m_actions.play();
}

}  // namespace tarvoke::app
