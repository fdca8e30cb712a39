#pragma once
// Settings: recording and playing options. Changes reach settings.dat at exit.

#include <QDialog>

class QCheckBox;

namespace tarvoke::app {

class App;

class FrmSettings : public QDialog {
public:
    explicit FrmSettings(App& app);

    QCheckBox* chkMM;
    QCheckBox* chkEx;
    QCheckBox* chkPause;
    QCheckBox* chkPrior;

    void cmdOK_Click();

private:
    App& m_app;
};

}  // namespace tarvoke::app
