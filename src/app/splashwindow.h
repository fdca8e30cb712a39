#pragma once
// The start-up window: shown for about a second, then the first working window.

#include <QTimer>
#include <QWidget>

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
    // Set by the update check when its connection has come up.
    bool m_connected = false;
};

}  // namespace tarvoke::app
