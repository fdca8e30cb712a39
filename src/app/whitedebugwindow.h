#pragma once
// White Debug mode: a white window over the whole screen, kept above the
// others, that shows the time of a Correct Time run against the recorded
// time, the statements run and the mouse position.

#include <QLabel>
#include <QTimer>
#include <QWidget>

#include "app/correcttimerun.h"
#include "playback/correcttime.h"

namespace tarvoke::app {

class App;

class WhiteDebugWindow : public QWidget {
public:
    explicit WhiteDebugWindow(App& app);

    // Shows the overlay and starts the timed run; the calling window is
    // hidden already and comes back at the end or on Ctrl+0.
    void startRun(const CallingWindow& caller);

    QLabel *timeCaption, *currentTime, *divider, *totalTime, *lineCaption, *lineCount, *mousePosition;

    // One poll of Ctrl+0 (the tick of the hotkey poll).
    void pollStopKey();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void timedRun();
    void stopRun();
    void showMousePosition();
    void giveBackCaller();

    App& m_app;
    CallingWindow m_caller;
    playback::TimedRun m_run;
    QTimer m_runTimer;
    QTimer m_hotkeyPoll;
    QTimer m_secondsTimer;
    QTimer m_mouseTimer;
    bool m_stopped = false;  // Ctrl+0 ended the run: no report
};

}  // namespace tarvoke::app
