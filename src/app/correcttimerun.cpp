#include "app/correcttimerun.h"

#include "app/app.h"
#include "app/playtimers.h"
#include "app/whitedebugwindow.h"

namespace tarvoke::app {

namespace {

constexpr int kSecondMs = 1000;

}  // namespace

CorrectTimeRun::CorrectTimeRun(App& app, CallingWindow window)
    : m_app(app), m_window(std::move(window)), m_run(app.engine, app.playback, app.session) {
    m_runTimer.setSingleShot(true);
    m_runTimer.setInterval(1);
    m_secondsTimer.setInterval(kSecondMs);
    m_secondsTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_runTimer, &QTimer::timeout, this, [this] { timedRun(); });
    connect(&m_secondsTimer, &QTimer::timeout, this, [this] { m_run.secondTick(); });
}

void CorrectTimeRun::start() {
    m_window.stop();
    m_app.scriptText = m_window.text().toStdString();
    m_app.session.targetWindow = 0;
    switch (m_app.dialogs().askYesNoCancel("White Debug mode?", "Do you wish to use the White Debug mode?")) {
    case Dialogs::Answer::Yes:
        m_window.timers->hideForRun();
        m_window.timers->setPlayTimer(false);
        m_window.timers->setHotkeyPoll(false);
        m_app.whiteDebugWindow().startRun(m_window);
        break;
    case Dialogs::Answer::No:
        m_window.timers->hideForRun();
        m_on = true;
        m_runTimer.start();
        break;
    case Dialogs::Answer::Cancel: break;
    }
}

void CorrectTimeRun::turnOff() {
    m_on = false;
    m_runTimer.stop();
}

void CorrectTimeRun::timedRun() {
    m_run.begin(m_app.scriptText);
    m_secondsTimer.start();
    m_run.run(m_app.scriptText, engine::ExecuteType::CorrectTime);
    const playback::Calibration calibration = m_run.finish();
    m_secondsTimer.stop();
    turnOff();
    m_window.rewriteText(rewrittenText(m_run, m_window, calibration));
    m_window.timers->showAfterRun();
    m_app.dialogs().tell("", QString::fromStdString(playback::timeReport(calibration)));
}

QString rewrittenText(const playback::TimedRun& run, const CallingWindow& window,
                      const playback::Calibration& calibration) {
    return QString::fromStdString(run.rewrite(window.text().toStdString(), calibration));
}

}  // namespace tarvoke::app
