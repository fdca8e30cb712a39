#pragma once
// Advanced Mode: a plain text editor for scripts with the File, Edit, Script
// and Help menus.

#include <QMainWindow>
#include <memory>

#include "app/findtext.h"
#include "app/playtimers.h"
#include "app/recordtimers.h"

class QAction;
class QPlainTextEdit;

namespace tarvoke::app {

class App;

class FrmMain : public QMainWindow {
public:
    explicit FrmMain(App& app);

    QPlainTextEdit* txtLog;
    PlayTimers& timers() { return *m_timers; }
    FindState& findState() { return m_find; }

    // File
    QAction *mnuNew, *mnuFileOpen, *mnuFileSave, *mnuFileSaveAs, *mnuFileCompile, *mnuFileBasicMode,
        *mnuFileSettings, *mnuExit;
    // Edit
    QAction *mnuEditCut, *mnuEditCopy, *mnuEditPaste, *mnuEditDelete, *mnuEditFind, *mnuEditFindNext,
        *mnuEditReplace, *mnuEditSelectAll;
    // Script
    QAction *mnuScriptPlay, *mnuScriptPlaySelection, *mnuScriptRepeat, *mnuScriptRecord, *mnuScriptStop,
        *mnuScriptCorrectTime, *mnuScriptDebug;
    // Help
    QAction *mnuHelpAbout, *mnuReadme;

    // Returns false when the user answered No to the question.
    bool mnuNew_Click();
    void mnuFileOpen_Click();
    void mnuFileSave_Click();
    void mnuFileSaveAs_Click();
    void mnuFileBasicMode_Click();
    void mnuExit_Click();
    void mnuEditDelete_Click();
    void mnuEditFind_Click();
    void mnuEditFindNext_Click();
    void mnuEditReplace_Click();
    void mnuScriptPlay_Click();
    void mnuScriptPlaySelection_Click();
    void mnuScriptRepeat_Click();
    void mnuScriptRecord_Click();
    void mnuScriptStop_Click();
    void FindIt();

    QString text() const;
    void setText(const QString& text);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void writeScript(const std::string& path);
    void StartRecording();
    void closeRecording();

    App& m_app;
    FindState m_find;
    std::unique_ptr<PlayTimers> m_timers;
    std::unique_ptr<RecordTimers> m_recordTimers;
};

}  // namespace tarvoke::app
