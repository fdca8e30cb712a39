#pragma once
// Advanced Mode: a plain text editor for scripts with the File, Edit, Script
// and Help menus.

#include <QMainWindow>
#include <QTextCursor>
#include <memory>

#include "app/correcttimerun.h"
#include "app/findtext.h"
#include "app/playtimers.h"
#include "app/recordtimers.h"
#include "app/scripteditor.h"

class QAction;
class QDockWidget;
class QListWidget;
class QTimer;

namespace tarvoke::app {

class App;

class AdvancedWindow : public QMainWindow {
public:
    explicit AdvancedWindow(App& app);

    ScriptEditor* editor;
    // The checker's findings, one a line; activating one puts the caret there.
    QDockWidget* checkDock;
    QListWidget* checkList;
    PlayTimers& timers() { return *m_timers; }
    FindState& findState() { return m_find; }

    // File
    QAction *newAction, *openAction, *saveAction, *saveAsAction, *compileAction, *basicModeAction,
        *settingsAction, *exitAction;
    // Edit
    QAction *cutAction, *copyAction, *pasteAction, *deleteAction, *findAction, *findNextAction, *replaceAction,
        *goToLineAction, *selectAllAction;
    // Script
    QAction *playAction, *playSelectionAction, *repeatAction, *recordAction, *stopAction, *correctTimeAction,
        *debugAction, *checkAction;
    // Help
    QAction *aboutAction, *readmeAction;

    // Returns false when the user answered No to the question.
    bool newScript();
    void openScript();
    void openCompiledScript(const std::string& path);
    // Return whether the script was saved.
    bool saveScript();
    // Compile: the text behind a copy of the runtime, as a program of its own.
    void compileScript();
    bool saveScriptAs();
    void switchToBasicMode();
    void exitProgram();
    void deleteText();
    void showFindDialog();
    void findNext();
    void showReplaceDialog();
    void playScript();
    void playSelection();
    void toggleRepeat();
    void recordScript();
    void stopScript();
    void correctTime();
    void showDebug();
    void goToLine();
    // Checks the text now, marks the findings and lists them.
    void checkScript();
    // Check: the list of findings shown.
    void showCheck();
    // One search from the caret with the find state; says so when nothing is found.
    void search();

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
    void startRecording();
    void closeRecording();

    App& m_app;
    FindState m_find;
    std::unique_ptr<PlayTimers> m_timers;
    std::unique_ptr<RecordTimers> m_recordTimers;
    std::unique_ptr<CorrectTimeRun> m_correctTime;
    QTextCursor m_keptLine;  // in the line whose layout is kept
    QTimer* m_checkTimer;    // a check once typing pauses
    int m_checkedRevision = 0;
};

}  // namespace tarvoke::app
