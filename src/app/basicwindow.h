#pragma once
// Basic Mode: buttons to record, play, open and save, with no script shown.

#include <QWidget>
#include <memory>

#include "app/playtimers.h"
#include "app/recordtimers.h"

class QCheckBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QButtonGroup;

namespace tarvoke::app {

class App;

class FrmBasic : public QWidget {
public:
    explicit FrmBasic(App& app);

    PlayTimers& timers() { return *m_timers; }

    QPushButton *cmdRecord, *cmdSave, *cmdOpen, *cmdAdvanced, *cmdCorrectTime, *cmdPlay;
    QRadioButton *optPlayOnce, *optRepeat, *optPlayX;
    QLineEdit* txtPlayX;
    QCheckBox *chkMM, *chkEx;
    QPushButton *cmdAbout, *cmdReadme;

    void cmdPlay_Click();
    void cmdRecord_Click();
    void StopScript();
    void cmdOpen_Click();
    // Return whether the script was saved.
    bool SaveScript();
    void cmdAdvanced_Click();
    void optPlayOnce_Click();
    void optRepeat_Click();
    void optPlayX_Click();

    // The hidden txtLog: the script.
    const QString& text() const { return m_txtLog; }
    void setText(const QString& text) { m_txtLog = text; }
    // Whether the text has changed since the last Open or Save.
    bool changed() const { return m_changed; }
    void setChanged(bool changed) { m_changed = changed; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QWidget* buildMainFrame();
    QWidget* buildPlayFrame();
    QWidget* buildRecordFrame();
    QWidget* buildHelpFrame();
    void closeRecording();
    bool saveWithDialog();

    App& m_app;
    QString m_txtLog;
    bool m_changed = false;
    QButtonGroup* m_playOptions = nullptr;
    std::unique_ptr<PlayTimers> m_timers;
    std::unique_ptr<RecordTimers> m_recordTimers;
};

}  // namespace tarvoke::app
