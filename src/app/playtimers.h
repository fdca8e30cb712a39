#pragma once
// The play timer and the hotkey poll of a main window, and what playback
// needs of that window (hide, show, the timer). Each main window owns
// one; the window in use is the playback's view.

#include <QObject>
#include <QTimer>
#include <QWidget>
#include <functional>

#include "playback/playback.h"

namespace tarvoke::app {

class App;

// What each hotkey does in one window.
struct HotkeyActions {
    std::function<void()> stop;    // Ctrl+0
    std::function<void()> pause;   // Ctrl+1, during a Correct Time run
    std::function<void()> record;  // Ctrl+8
    std::function<void()> play;    // Ctrl+9
};

class PlayTimers : public QObject, public playback::PlaybackView {
public:
    PlayTimers(App& app, QWidget& window, HotkeyActions actions);

    // The hotkey poll: every millisecond, or off.
    void setHotkeyPoll(bool on);
    bool hotkeyPollOn() const { return m_hotkeyPoll.isActive(); }
    bool playTimerOn() const { return m_playTimer.isActive(); }
    bool correctTimeTimerOn() const { return isCorrectTimeOn && isCorrectTimeOn(); }

    // The window's own steps of Stop and its Play X option.
    std::function<void()> onAfterStop;
    std::function<bool()> isPlayXSelected;
    // Whether the window's Correct Time run is timed now (Ctrl+1 works then).
    std::function<bool()> isCorrectTimeOn;

    // One poll of the hotkeys (the tick of the hotkey poll).
    void pollHotkeys();

    void hideForRun() override;
    void showAfterRun() override;
    void setPlayTimer(bool on) override;
    void afterStop() override;
    bool playXSelected() const override;

private:
    App& m_app;
    QWidget& m_window;
    HotkeyActions m_actions;
    QTimer m_playTimer;
    QTimer m_hotkeyPoll;
};

}  // namespace tarvoke::app
