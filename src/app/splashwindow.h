#pragma once
// The start-up window: shown for about a second, then the first working window.

#include <QTimer>
#include <QWidget>

#include "net/updatecheck.h"
#include "platform/loop/qtloop.h"

namespace tarvoke::app {

class App;

class SplashWindow : public QWidget {
public:
    explicit SplashWindow(App& app);

    // Starts the way to the first window: the update check, then the wait
    // before the first window.
    void start();
    void skip();
    void showStartWindow();

    // Starts the update check once the splash is up.
    QTimer updateCheckTimer;
    // How long the splash stays.
    QTimer splashTimer;

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    void startUpdateCheck();
    void endSplash();

    App& m_app;
    platform::QtLoop m_loop;
    // Asks the update server, if this build names one. It alone calls
    // showStartWindow, once: on its answer, or when the splash's time is up.
    net::UpdateCheck m_update;
};

}  // namespace tarvoke::app
