#pragma once
// Settings: recording and playing options. Changes reach settings.dat at exit.

#include <QDialog>

class QCheckBox;

namespace tarvoke::app {

class App;

class SettingsDialog : public QDialog {
public:
    explicit SettingsDialog(App& app);

    QCheckBox* mouseMoveBox;
    QCheckBox* extendedClicksBox;
    QCheckBox* ignorePausesBox;
    QCheckBox* highPriorityBox;

    // OK: the boxes become the settings.
    void apply();

private:
    App& m_app;
};

}  // namespace tarvoke::app
