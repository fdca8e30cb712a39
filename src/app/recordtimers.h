#pragma once
// The recording timers of a main window: one counts the seconds; the
// sample timer ticks the sampler every millisecond where the key state cannot
// drive it by its changes. Where it can, the window's hotkeys are looked at
// after each change instead of every millisecond, so nothing wakes while the
// user does nothing. The recorder's state is the
// program's (App::recorder); the button flags and the last move are the
// window's own.

#include <QObject>
#include <QTimer>
#include <memory>
#include <optional>
#include <string>

#include "recorder/recorderstate.h"
#include "recorder/recorder.h"

class QString;

namespace tarvoke::app {

class App;
class PlayTimers;

// Asked before a recording replaces the script in the editor; true for Yes.
bool confirmRecording(App& app);

class RecordTimers : public QObject {
public:
    RecordTimers(App& app, recorder::Form kind);
    ~RecordTimers() override;

    // Resets the recorder, takes the settings' mouse-move and extended-click
    // choices, and starts both timers. The window hides itself before; its
    // hotkey poll rests while changes drive the recording.
    void start(PlayTimers& hotkeys);
    // The finished script when a recording ran, after stopping its timers;
    // settings changed by Ctrl+6 and Ctrl+7 in the recording are kept and
    // saved.
    std::optional<std::string> closeIfRecording();


private:
    App& m_app;
    recorder::FormState m_form;
    std::unique_ptr<recorder::Recorder> m_recorder;
    QTimer m_sampleTimer;
    QTimer m_secondTimer;
    PlayTimers* m_restingPoll = nullptr;
};

}  // namespace tarvoke::app
