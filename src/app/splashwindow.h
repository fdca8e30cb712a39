#pragma once
// The start-up form: shown for about a second, then the first working window.

#include <QTimer>
#include <QWidget>

namespace tarvoke::app {

class App;

class FrmSplash2 : public QWidget {
public:
    explicit FrmSplash2(App& app);

    // Starts the way to the first window: tmrUpdate, then tmr1.
    void start();
    void SkipSplash();
    void ShowStartWindow();

    QTimer tmrUpdate;
    QTimer tmr1;

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    void tmrUpdate_Timer();
    void tmr1_Timer();

    App& m_app;
    // Set by the update check when its connection has come up.
    bool m_connected = false;
};

}  // namespace tarvoke::app
