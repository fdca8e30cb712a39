#include "app/splashwindow.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProcess>
#include <QVBoxLayout>

#include "app/app.h"
#include "app/modechoicewindow.h"

namespace tarvoke::app {

namespace {

constexpr int kUpdateCheckDelayMs = 1;
constexpr int kSplashMs = 1000;
// Until the update check sets the wait itself.
constexpr int kSplashLongestMs = 2000;

}  // namespace

SplashWindow::SplashWindow(App& app)
    : m_app(app),
      m_update(m_loop, net::configuredServer(),
               {[this] {
                    splashTimer.stop();
                    showStartWindow();
                },
                [this] {
                    return m_app.dialogs().askYesNo("Update", "There is an update available, would you like to update?");
                },
                [this](const std::string& address) {
                    QProcess::startDetached("xdg-open", {QString::fromStdString(address)});
                    m_app.endProcess();
                }}) {
    setWindowTitle("Splash");
    // A splash takes no place in the task list.
    setWindowFlags(Qt::SplashScreen | Qt::FramelessWindowHint);
    setObjectName("splash");
    setStyleSheet("QWidget#splash { background: black; } QLabel { color: white; }");
    setAttribute(Qt::WA_StyledBackground);
    setFixedSize(376, 134);  // 5640 by 2010 twips

    auto* icon = new QLabel;
    icon->setObjectName("icon");
    icon->setText(QString::fromUtf8("\u25B6"));
    icon->setStyleSheet("font-size: 44px; color: #4fc3f7;");
    auto* title = new QLabel("Tarvoke");
    title->setObjectName("title");
    title->setStyleSheet("font-size: 34px; font-weight: bold;");
    auto* tagline = new QLabel("record \u00B7 play \u00B7 automate");
    tagline->setStyleSheet("font-size: 13px; color: #b0b0b0;");

    auto* titles = new QVBoxLayout;
    titles->addWidget(title);
    titles->addWidget(tagline);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(24, 16, 24, 16);
    row->addWidget(icon);
    row->addSpacing(16);
    row->addLayout(titles, 1);
    // Clicks on the pictures reach the form, which skips the splash.
    icon->setAttribute(Qt::WA_TransparentForMouseEvents);
    title->setAttribute(Qt::WA_TransparentForMouseEvents);
    tagline->setAttribute(Qt::WA_TransparentForMouseEvents);

    splashTimer.setInterval(kSplashLongestMs);
    connect(&updateCheckTimer, &QTimer::timeout, this, [this] { startUpdateCheck(); });
    connect(&splashTimer, &QTimer::timeout, this, [this] { endSplash(); });
}

void SplashWindow::start() {
    updateCheckTimer.start(kUpdateCheckDelayMs);
}

void SplashWindow::startUpdateCheck() {
    m_update.start();
    splashTimer.start(kSplashMs);
    updateCheckTimer.stop();
}

void SplashWindow::endSplash() {
    splashTimer.stop();
    m_update.timeUp();
}

void SplashWindow::mousePressEvent(QMouseEvent*) { skip(); }

void SplashWindow::skip() {
    splashTimer.stop();
    updateCheckTimer.stop();
    m_update.timeUp();
}

void SplashWindow::showStartWindow() {
    m_app.saveSettings();
    if (m_app.firstRun) {
        m_app.modeChoiceWindow().show();
    } else {
        m_app.showModeWindow();
    }
    hide();
}

}  // namespace tarvoke::app
