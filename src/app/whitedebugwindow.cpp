#include "app/whitedebugwindow.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QGuiApplication>
#include <QPalette>
#include <QScreen>

#include "app/app.h"
#include "app/playtimers.h"
#include "engine/numeric.h"
#include "playback/hotkeys.h"

namespace tarvoke::app {

namespace {

constexpr int kSecondMs = 1000;
constexpr int kMouseMs = 100;
// The mouse position sits this far above the bottom edge (255 twips).
constexpr int kMouseLineHeight = 17;

QRect screenRect() {
    QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->geometry() : QRect(0, 0, 1920, 1080);
}

}  // namespace

WhiteDebugWindow::WhiteDebugWindow(App& app)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      m_app(app),
      m_run(app.engine, app.playback, app.session) {
    setObjectName("whiteDebug");
    setWindowTitle("");
    QPalette palette;
    palette.setColor(QPalette::Window, Qt::white);
    palette.setColor(QPalette::WindowText, Qt::black);
    setPalette(palette);
    setAutoFillBackground(true);
    QFont font("Verdana");
    font.setPointSizeF(9.75);
    auto label = [&](const char* name, const QString& text, int left, int top) {
        auto* l = new QLabel(text, this);
        l->setObjectName(name);
        l->setFont(font);
        l->move(left, top);
        l->setMinimumWidth(200);
        return l;
    };
    // Places in pixels of the twips the labels were laid out in (15 a pixel).
    timeCaption = label("timeCaption", "Time (seconds):", 8, 8);
    currentTime = label("currentTime", "0", 8, 32);
    divider = label("divider", "/", 80, 32);
    divider->setMinimumWidth(0);
    totalTime = label("totalTime", "0", 96, 32);
    lineCaption = label("lineCaption", "Line:", 8, 64);
    lineCount = label("lineCount", "0", 8, 88);
    mousePosition = label("mousePosition", "", 0, 0);
    setGeometry(screenRect());

    m_runTimer.setSingleShot(true);
    m_runTimer.setInterval(1);
    m_hotkeyPoll.setInterval(1);
    m_hotkeyPoll.setTimerType(Qt::PreciseTimer);
    m_secondsTimer.setInterval(kSecondMs);
    m_secondsTimer.setTimerType(Qt::PreciseTimer);
    m_mouseTimer.setInterval(kMouseMs);
    connect(&m_runTimer, &QTimer::timeout, this, [this] { timedRun(); });
    connect(&m_hotkeyPoll, &QTimer::timeout, this, [this] { pollStopKey(); });
    connect(&m_secondsTimer, &QTimer::timeout, this, [this] {
        m_run.secondTick();
        currentTime->setText(QString::number(m_run.seconds()));
    });
    connect(&m_mouseTimer, &QTimer::timeout, this, [this] { showMousePosition(); });
    m_run.countStatements([this](int32_t count) { lineCount->setText(QString::number(count)); });
}

void WhiteDebugWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const QRect screen = screenRect();
    if (geometry() != screen) setGeometry(screen);
    mousePosition->move(0, height() - kMouseLineHeight);
}

void WhiteDebugWindow::startRun(const CallingWindow& caller) {
    m_caller = caller;
    m_app.engine.setExecuteType(engine::ExecuteType::WhiteDebug);
    m_stopped = false;
    m_hotkeyPoll.start();
    m_runTimer.start();
    showFullScreen();
    raise();
}

void WhiteDebugWindow::timedRun() {
    currentTime->setText("0");
    lineCount->setText("0");
    m_run.begin(m_app.scriptText);
    totalTime->setText(QString::fromStdString(engine::doubleToText(m_run.recorded())));
    m_secondsTimer.start();
    m_mouseTimer.start();
    showMousePosition();
    m_run.run(m_app.scriptText, engine::ExecuteType::WhiteDebug);
    const playback::Calibration calibration = m_run.finish();
    m_secondsTimer.stop();
    currentTime->setText(QString::fromStdString(engine::doubleToText(calibration.measured)));
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    m_caller.rewriteText(rewrittenText(m_run, m_caller, calibration));
    m_hotkeyPoll.stop();
    m_mouseTimer.stop();
    hide();
    if (!m_stopped) {
        m_app.dialogs().tell("", QString::fromStdString(playback::timeReport(calibration)));
        giveBackCaller();
    }
}

void WhiteDebugWindow::pollStopKey() {
    platform::KeyState* keys = m_app.keys();
    if (!keys) return;
    // Only Ctrl+0 acts in this mode; the poll still reads every digit.
    for (playback::Hotkey hotkey :
         playback::pollHotkeys(*keys, {false, true, std::exchange(m_app.session.stopKeysSeen, false)}))
        if (hotkey == playback::Hotkey::Stop) stopRun();
}

// Ctrl+0: the caller comes back at once; the run ends after the statement
// in hand, and its tick still rewrites the text but shows no report.
void WhiteDebugWindow::stopRun() {
    m_app.playback.stop();
    m_stopped = true;
    m_secondsTimer.stop();
    m_hotkeyPoll.stop();
    m_runTimer.stop();
    giveBackCaller();
    hide();
}

void WhiteDebugWindow::giveBackCaller() {
    if (!m_caller.timers) return;
    m_caller.timers->setHotkeyPoll(true);
    m_caller.timers->showAfterRun();
}

void WhiteDebugWindow::showMousePosition() {
    if (!m_app.session.platform.input) return;
    const platform::Point at = m_app.session.platform.input->cursorPos();
    mousePosition->setText(QString("(%1, %2)").arg(at.x).arg(at.y));
}

}  // namespace tarvoke::app
