#pragma once
// Basic Mode: buttons to record, play, open and save, with no script shown.

#include <QWidget>
#include <memory>

#include "app/correcttimerun.h"
#include "app/playtimers.h"
#include "app/recordtimers.h"

class QCheckBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QButtonGroup;

namespace tarvoke::app {

class App;

class BasicWindow : public QWidget {
public:
    explicit BasicWindow(App& app);

    PlayTimers& timers() { return *m_timers; }

    QPushButton *recordButton, *saveButton, *openButton, *advancedModeButton, *correctTimeButton, *playButton;
    QRadioButton *playOnceOption, *repeatOption, *playXOption;
    QLineEdit* playCountEdit;
    QCheckBox *mouseMoveBox, *extendedClicksBox;
    QPushButton *aboutButton, *readmeButton;

    void playScript();
    void recordScript();
    void stopScript();
    void openScript();
    // Return whether the script was saved.
    bool saveScript();
    void switchToAdvancedMode();
    void choosePlayOnce();
    void chooseRepeat();
    void choosePlayX();

    // The script, which this window does not show.
    const QString& text() const { return m_text; }
    void setText(const QString& text) { m_text = text; }
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
    QString m_text;
    bool m_changed = false;
    QButtonGroup* m_playOptions = nullptr;
    std::unique_ptr<PlayTimers> m_timers;
    std::unique_ptr<RecordTimers> m_recordTimers;
    std::unique_ptr<CorrectTimeRun> m_correctTime;
};

}  // namespace tarvoke::app
