#pragma once
// Advanced Mode: a plain text editor for scripts with the File, Edit, Script
// and Help menus.

#include <QMainWindow>
#include <QTextCursor>
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
    // Return whether the script was saved.
    bool mnuFileSave_Click();
    bool mnuFileSaveAs_Click();
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
    // Puts a new script in: Undo starts afresh, unless the text is the same
    // (a switch of modes and back keeps the Undo steps).
    void setText(const QString& text);
    // Replaces the text as an edit: one step that Undo takes back.
    void editText(const QString& text);
    // Whether the text has changed since the last New, Open or Save.
    bool changed() const;
    void setChanged(bool changed);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    bool writeScript(const std::string& path);
    void keepCaretLineLaidOut();
    void StartRecording();
    void closeRecording();

    App& m_app;
    FindState m_find;
    std::unique_ptr<PlayTimers> m_timers;
    std::unique_ptr<RecordTimers> m_recordTimers;
    QTextCursor m_keptLine;  // in the line whose layout is kept
};

}  // namespace tarvoke::app
