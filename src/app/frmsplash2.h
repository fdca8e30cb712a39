#pragma once
// The start-up form: shown for about a second, then the first working window.

#include <QTimer>
#include <QWidget>

#include "net/updatecheck.h"
#include "platform/loop/qtloop.h"

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
    platform::QtLoop m_loop;
    // ClientUpdate: asks the update server, if this build names one. It alone
    // calls ShowStartWindow, once: on its answer, or when tmr1 says time is up.
    net::UpdateCheck m_update;
};

}  // namespace tarvoke::app
