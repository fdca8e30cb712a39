#include "app/frmsplash2.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProcess>
#include <QVBoxLayout>

#include "app/app.h"
#include "app/frmbasic.h"
#include "app/frmchoice.h"
#include "app/frmmain.h"

namespace tarvoke::app {

FrmSplash2::FrmSplash2(App& app)
    : m_app(app),
      m_update(m_loop, net::configuredServer(),
               {[this] {
                    tmr1.stop();
                    ShowStartWindow();
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
    setObjectName("frmSplash2");
    setStyleSheet("QWidget#frmSplash2 { background: black; } QLabel { color: white; }");
    setAttribute(Qt::WA_StyledBackground);
    setFixedSize(376, 134);  // 5640 by 2010 twips

    auto* imgIcon = new QLabel;
    imgIcon->setObjectName("imgIcon");
    imgIcon->setText(QString::fromUtf8("\u25B6"));
    imgIcon->setStyleSheet("font-size: 44px; color: #4fc3f7;");
    auto* imgTitle = new QLabel("Tarvoke");
    imgTitle->setObjectName("imgTitle");
    imgTitle->setStyleSheet("font-size: 34px; font-weight: bold;");
    auto* tagline = new QLabel("record \u00B7 play \u00B7 automate");
    tagline->setStyleSheet("font-size: 13px; color: #b0b0b0;");

    auto* titles = new QVBoxLayout;
    titles->addWidget(imgTitle);
    titles->addWidget(tagline);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(24, 16, 24, 16);
    row->addWidget(imgIcon);
    row->addSpacing(16);
    row->addLayout(titles, 1);
    // Clicks on the pictures reach the form, which skips the splash.
    imgIcon->setAttribute(Qt::WA_TransparentForMouseEvents);
    imgTitle->setAttribute(Qt::WA_TransparentForMouseEvents);
    tagline->setAttribute(Qt::WA_TransparentForMouseEvents);

    tmr1.setInterval(2000);
    connect(&tmrUpdate, &QTimer::timeout, this, [this] { tmrUpdate_Timer(); });
    connect(&tmr1, &QTimer::timeout, this, [this] { tmr1_Timer(); });
}

void FrmSplash2::start() {
    tmrUpdate.start(1);
}

void FrmSplash2::tmrUpdate_Timer() {
    m_update.start();
    tmr1.start(1000);
    tmrUpdate.stop();
}

void FrmSplash2::tmr1_Timer() {
    tmr1.stop();
    m_update.timeUp();
}

void FrmSplash2::mousePressEvent(QMouseEvent*) { SkipSplash(); }

void FrmSplash2::SkipSplash() {
    tmr1.stop();
    tmrUpdate.stop();
    m_update.timeUp();
}

void FrmSplash2::ShowStartWindow() {
    m_app.SaveSettings();
    if (m_app.bFirstRun) {
        m_app.frmChoice().show();
    } else {
        m_app.showModeWindow();
    }
    hide();
}

}  // namespace tarvoke::app
