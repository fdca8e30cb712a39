#pragma once
// Correct Time from a main window: the question, the hidden timed run with
// its seconds timer, and the report. Each main window owns one; the run
// behind the white overlay is WhiteDebugWindow's.

#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>

#include "playback/correcttime.h"

class QWidget;

namespace tarvoke::app {

class App;
class PlayTimers;

// What a main window lends to a timed run: its Stop, its script text, and
// its timers for hiding and showing it.
struct CallingWindow {
    std::function<void()> stop;
    std::function<QString()> text;
    // Puts the calibrated text in, as an edit the user may save or undo.
    std::function<void(const QString&)> rewriteText;
    PlayTimers* timers = nullptr;
    bool basic = false;
};

class CorrectTimeRun : public QObject {
public:
    CorrectTimeRun(App& app, CallingWindow window);

    // The menu item or button: asks which kind of run, and starts it.
    void start();
    // Whether the timed run is on (from the question to the end of its
    // tick, unless a Stop turned it off): Ctrl+1 works only then.
    bool on() const { return m_on; }
    // Stop turns the run's timer off; a tick in hand still calibrates and
    // reports.
    void turnOff();

private:
    void timedRun();

    App& m_app;
    CallingWindow m_window;
    playback::TimedRun m_run;
    QTimer m_runTimer;
    QTimer m_secondsTimer;
    bool m_on = false;
};

// Calibrates the calling window's text and returns the new text.
QString rewrittenText(const playback::TimedRun& run, const CallingWindow& window,
                      const playback::Calibration& calibration);

}  // namespace tarvoke::app
