// The program's windows on the fake platform, offscreen, in sections: start-up,
// Basic Mode, recording, Correct Time, Compile, every window's layout, and
// Advanced Mode's files, editing, Find and Replace and the language in the editor.

#include <QAbstractButton>
#include <QCheckBox>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTextBlock>
#include <QToolTip>
#include <QtTest>
#include <sys/stat.h>

#include "app/aboutdialog.h"
#include "app/advancedwindow.h"
#include "app/basicwindow.h"
#include "app/debugwindow.h"
#include "app/finddialog.h"
#include "app/modechoicewindow.h"
#include "app/paths.h"
#include "app/replacedialog.h"
#include "app/scriptfile.h"
#include "app/settings.h"
#include "app/settingsdialog.h"
#include "app/splashwindow.h"
#include "app/whitedebugwindow.h"
#include "app_fixture.h"

using namespace tarvoke::app;
using namespace tarvoke::app::testing;
using Choice = Dialogs::SaveChoice;

namespace {

enum Key : uint8_t { kCtrl = 17, kZero = 48, kEight = 56, kNine = 57, kA = 65, kLeftCtrl = 162 };

// The controls a user reads or operates: text must fit and none may cover another.
bool isControl(const QWidget* widget) {
    return qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QLabel*>(widget) ||
           qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QPlainTextEdit*>(widget);
}

QStringList layoutFaults(QWidget& window) {
    window.show();
    for (int i = 0; i < 10; ++i) QCoreApplication::processEvents();
    QStringList faults;
    QList<QPair<QRect, QString>> placed;
    for (QWidget* child : window.findChildren<QWidget*>()) {
        if (!child->isVisibleTo(&window) || !isControl(child)) continue;
        const QString name = QString("%1 '%2'").arg(child->metaObject()->className(), child->property("text").toString());
        const QRect rect(child->mapTo(&window, QPoint(0, 0)), child->size());
        if (!window.rect().contains(rect)) faults << name + " reaches outside the window";
        const QSize needed = child->minimumSizeHint();
        if (!qobject_cast<QPlainTextEdit*>(child) && (child->width() < needed.width() || child->height() < needed.height()))
            faults << name + " is smaller than its text needs";
        for (const auto& [other, otherName] : placed)
            if (rect.intersects(other)) faults << name + " covers " + otherName;
        placed.append({rect, name});
    }
    window.hide();
    return faults;
}

void select(AdvancedWindow& window, int start, int length) {
    QTextCursor cursor = window.editor->textCursor();
    cursor.setPosition(start);
    cursor.setPosition(start + length, QTextCursor::KeepAnchor);
    window.editor->setTextCursor(cursor);
}

Selection selectionOf(AdvancedWindow& window) {
    const QTextCursor cursor = window.editor->textCursor();
    return {cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart()};
}

// The format the editor shows at a 1-based line and a 0-based character.
QTextCharFormat formatAt(AdvancedWindow& window, int line, int column) {
    const QTextBlock block = window.editor->document()->findBlockByNumber(line - 1);
    for (const QTextLayout::FormatRange& range : block.layout()->formats())
        if (column >= range.start && column < range.start + range.length) return range.format;
    return {};
}

Token tokenAt(AdvancedWindow& window, int line, int column) {
    return static_cast<Token>(formatAt(window, line, column).property(ScriptHighlighter::kTokenProperty).toInt());
}

bool underlinedAt(AdvancedWindow& window, int line, int column) {
    return formatAt(window, line, column).underlineStyle() == QTextCharFormat::SpellCheckUnderline;
}

QPoint pointAt(AdvancedWindow& window, int line, int column) {
    QTextCursor cursor(window.editor->document()->findBlockByNumber(line - 1));
    cursor.setPosition(cursor.position() + column);
    return window.editor->cursorRect(cursor).center() + QPoint(2, 0);
}

}  // namespace

class WindowsTest : public QObject {
    Q_OBJECT

private slots:
    // Start-up: settings.dat and where it lives, the splash, the mode choice.
    // The file's text and the five flags as read; a settings.dat that is no
    // file gives the defaults, as a missing one does: no abort, no wait on a FIFO.
    void settingsFileAsReadAndWhereItLives() {
        const std::pair<const char*, const char*> rows[] = {
            {"1,1,1,0,1,", "11101"}, {"0,0,0,1,1,", "00011"}, {"1,1,1,1,1", "11111"},  // the last comma missing
            {"1,1,", "11000"},  // a short file means Advanced Mode
            {"-1,true,1 ,01,1,", "00001"}, {"", "00000"}, {"1,1,1,1,1\r\n", "11110"}};
        for (const auto& [text, expected] : rows) {
            const Settings s = parseSettings(text);
            QString flags;
            for (bool b : {s.repeat, s.mouseMove, s.extendedClicks, s.ignorePauses, s.basicMode}) flags += b ? '1' : '0';
            QCOMPARE(flags, expected);
        }
        QTemporaryDir folder;
        const std::string path = folder.filePath("settings.dat").toStdString();
        QCOMPARE(::mkdir(path.c_str(), 0700), 0);
        QVERIFY(loadSettings(path).firstRun);
        ::rmdir(path.c_str());
        QCOMPARE(::mkfifo(path.c_str(), 0600), 0);
        const LoadedSettings loaded = loadSettings(path);
        QVERIFY(loaded.firstRun);
        QCOMPARE(formatSettings(loaded.settings), formatSettings(Settings{}));

        QTemporaryDir config;
        const auto where = [&] { return QString::fromStdString(settingsFolder(folder.path().toStdString()).string()); };
        qputenv("TARVOKE_SETTINGS_DIR", "/somewhere/else");
        QCOMPARE(where(), "/somewhere/else");
        qunsetenv("TARVOKE_SETTINGS_DIR");
        QCOMPARE(where(), folder.path());
        qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
        testing::ReadOnlyFolder readOnly(folder.path());
        if (!readOnly.ok()) QSKIP("cannot make a read-only folder here");
        QCOMPARE(where(), config.path() + "/tarvoke");
        QVERIFY(QFileInfo(config.path() + "/tarvoke").isDir());
    }

    // The first start asks for the mode and saves the choice; closing the
    // question ends the program.
    void firstStartAsksForTheMode() {
        for (const bool advanced : {false, true}) {
            AppFixture f;
            QVERIFY(f.app->firstRun);
            f.app->splashWindow().showStartWindow();
            QVERIFY(f.app->modeChoiceWindow().isVisible());
            QVERIFY(!f.app->basicWindowLoaded() && !f.app->advancedWindowLoaded());
            QCOMPARE(f.readFile("settings.dat"), QByteArray("1,1,1,0,1,"));
            f.app->modeChoiceWindow().advancedOption->setChecked(advanced);
            f.app->modeChoiceWindow().okButton->click();
            QVERIFY(!f.app->modeChoiceWindow().isVisible());
            QVERIFY(advanced ? f.app->advancedWindow().isVisible() : f.app->basicWindow().isVisible());
            QCOMPARE(f.readFile("settings.dat"), QByteArray(advanced ? "1,1,1,0,0," : "1,1,1,0,1,"));
        }
        AppFixture f;
        f.app->splashWindow().showStartWindow();
        f.app->modeChoiceWindow().close();
        QCOMPARE(f.exits, 1);
    }

    // The splash goes on by its own timer to the saved mode, which shows the
    // file's flags and leaves Advanced Mode unloaded (its load would turn the
    // first three flags on, as a switch to it does); a switch back to Basic
    // Mode is kept for the next start.
    void savedModeIsShownAndKeptForTheNextStart() {
        AppFixture f("0,0,0,1,1,");
        SplashWindow& splash = f.app->splashWindow();
        splash.show();
        splash.start();
        QTRY_VERIFY_WITH_TIMEOUT(f.app->basicWindowLoaded() && f.app->basicWindow().isVisible(), 3000);
        QVERIFY(!splash.isVisible() && !f.app->advancedWindowLoaded());
        QVERIFY(!splash.splashTimer.isActive() && !splash.updateCheckTimer.isActive());
        BasicWindow& basic = f.app->basicWindow();
        QVERIFY(basic.timers().hotkeyPollOn() && f.app->session.ignorePauses);
        QVERIFY(!basic.repeatOption->isChecked() && !basic.mouseMoveBox->isChecked() && !basic.extendedClicksBox->isChecked());
        basic.switchToAdvancedMode();
        QVERIFY(f.app->session.repeat && f.app->mouseMove && f.app->extendedClicks);
        QVERIFY(f.app->advancedWindow().repeatAction->isChecked());
        QVERIFY(!basic.repeatOption->isChecked());  // shown at the first load only
        f.app->advancedWindow().switchToBasicMode();
        basic.close();
        QCOMPARE(f.exits, 1);
        QCOMPARE(f.readFile("settings.dat"), "1,1,1,1,1,");
    }

    // Basic Mode: its files, the switch between the modes, the play options, the hotkeys.
    // Each switch takes the text and the script's name along and moves the
    // hotkey poll and the playback's view, so that the hotkeys act on the
    // window in use; a bare caption is not carried.
    void switchesCarryTextAndCaption() {
        const std::pair<QString, QString> captions[] = {{"Tarvoke - job.tk", "Tarvoke Basic Mode - job.tk"},
                                                        {"Tarvoke - Untitled", "Tarvoke Basic Mode - Untitled"},
                                                        {"Tarvoke", "Tarvoke Basic Mode"}};
        for (const auto& [advancedCaption, basicCaption] : captions) {
            AppFixture f("1,1,1,0,0,");
            AdvancedWindow& advanced = f.app->advancedWindow();
            advanced.show();
            advanced.setWindowTitle(advancedCaption);
            advanced.setText("Pause(1);");
            advanced.switchToBasicMode();
            BasicWindow& basic = f.app->basicWindow();
            QVERIFY(basic.isVisible() && !advanced.isVisible());
            QCOMPARE(basic.windowTitle(), basicCaption);
            QCOMPARE(basic.text(), "Pause(1);");
            QVERIFY(f.app->basicMode);
            QVERIFY(basic.timers().hotkeyPollOn() && !advanced.timers().hotkeyPollOn());
            QCOMPARE(f.app->playback.view(), &basic.timers());
            f.keys.press(kCtrl);  // Ctrl+9 plays Basic Mode's script
            f.keys.press(kNine);
            basic.timers().pollHotkeys();
            QVERIFY(basic.timers().playTimerOn() && !basic.isVisible() && !advanced.timers().playTimerOn());
            f.keys.press(kZero);  // Ctrl+0 stops and shows the window at once
            basic.timers().pollHotkeys();
            QVERIFY(!basic.timers().playTimerOn() && basic.isVisible() && !advanced.isVisible());
            f.keys.releaseAll();
            basic.setText("changed");
            if (advancedCaption == "Tarvoke") advanced.setWindowTitle("Tarvoke - before.tk");
            basic.switchToAdvancedMode();
            QVERIFY(advanced.isVisible() && !basic.isVisible());
            QCOMPARE(advanced.windowTitle(), advancedCaption == "Tarvoke" ? "Tarvoke - before.tk" : advancedCaption);
            QCOMPARE(advanced.text(), "changed");
            QVERIFY(!f.app->basicMode);
            QVERIFY(advanced.timers().hotkeyPollOn() && !basic.timers().hotkeyPollOn());
            QCOMPARE(f.app->playback.view(), &advanced.timers());
        }
    }

    // Save does nothing until a script was recorded or opened, and then
    // always asks for a name.
    void basicModeSaveAndOpen() {
        AppFixture f;
        BasicWindow& basic = f.app->basicWindow();
        f.writeFile("a.tk", "Pause(1);");
        f.dialogs.paths = {f.qpath("never.tk")};
        basic.saveScript();
        QCOMPARE(f.dialogs.paths.size(), size_t(1));  // not asked
        f.dialogs.paths = {f.qpath("a.tk"), f.qpath("b.tk")};
        basic.openScript();
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode - a.tk");
        QCOMPARE(basic.text(), "Pause(1);");
        basic.saveScript();
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode - b.tk");
        QCOMPARE(f.readFile("b.tk"), "Pause(1);");
        basic.saveScript();  // asks again: cancelled this time
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode - b.tk");
    }

    // Play X: a count that is not numeric is refused; another is the play's
    // target (the runs that a target makes: playback_test).
    void playXSetsTheTargetOrIsRefused() {
        // The count, the target it sets (-1: refused).
        const std::pair<const char*, int> rows[] = {{"3", 3},    {"1", 1},   {"2.5", 2},  {"1e1", 10},
                                                    {"0", 0},    {"abc", -1}, {"", -1},   {"1e12", -1}};
        for (const auto& [count, target] : rows) {
            AppFixture f;
            BasicWindow& basic = f.app->basicWindow();
            basic.show();
            basic.setText("Function(Main);\nMessage(run, normal, t);\nEndFunction();");
            basic.playXOption->click();
            basic.playCountEdit->setText(count);
            basic.playScript();
            QCOMPARE(basic.timers().playTimerOn(), target >= 0);
            QCOMPARE(basic.isVisible(), target < 0);
            QCOMPARE(f.dialogs.told, target < 0 ? QStringList{"Error: The Play X times must be numeric!"} : QStringList());
            if (target < 0) {
                QCOMPARE(f.dialogs.lastIcon, Dialogs::Icon::Stop);
                continue;
            }
            QCOMPARE(f.app->playback.playTarget(), target);
            QVERIFY(f.app->session.repeat && basic.timers().playXSelected());
        }
    }

    // The keyboard's way: a fresh window has the focus on Record, and Tab
    // passes the buttons in their row to the play options.
    void playOptionsSetRepeatAndTabReachesThem() {
        AppFixture f;
        BasicWindow& basic = f.app->basicWindow();
        basic.show();
        basic.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&basic));
        QCOMPARE(QApplication::focusWidget(), static_cast<QWidget*>(basic.recordButton));
        for (QWidget* next : QList<QWidget*>{basic.saveButton, basic.openButton, basic.advancedModeButton,
                                             basic.correctTimeButton, basic.playButton, basic.playOnceOption}) {
            if (!next->isEnabled()) continue;
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget(), next);
        }
        for (const auto& [option, repeat] : {std::pair{basic.playOnceOption, false}, {basic.repeatOption, true},
                                             {basic.playXOption, false}}) {
            option->click();
            QCOMPARE(f.app->session.repeat, repeat);
        }
    }

    // Recording from both windows: the question before a script is replaced, start and
    // stop, Ctrl+8, Ctrl+6 and Ctrl+7.
    // New, Open and Record ask before they replace a script; a No keeps
    // everything and ends an Open. Basic Mode's Open asks even over the template.
    void askedBeforeAScriptIsLost() {
        enum Step { New, Open, Record };
        const QString script = "Function(Main);\nPause(1);\nEndFunction();";
        // Basic Mode, the step, the text, whether the step asks.
        const std::tuple<bool, Step, QString, bool> rows[] = {
            {false, New, "", false},          {false, New, kTemplate, false},   {false, New, kTemplate + "\n", false},
            {false, New, kTemplate + "\n\n", true}, {false, New, script, true},  {false, Record, "", false},
            {false, Record, kTemplate, true}, {false, Record, script, true},    {true, Record, "", false},
            {true, Record, kTemplate, false}, {true, Record, kTemplate + "\n", true}, {true, Record, script, true},
            {false, Open, kTemplate, false},  {false, Open, script, true},      {true, Open, kTemplate, true}};
        for (const auto& [basic, step, text, asks] : rows) {
            AppFixture f;
            Window w = windowOf(*f.app, basic);
            w.widget->show();
            basic ? w.setText(text) : f.app->advancedWindow().editText(text);  // typed into the editor
            w.widget->setWindowTitle("Tarvoke - old.tk");
            f.app->filePath = "/x/old.tk";
            f.dialogs.answers = {false};
            f.dialogs.paths = {QString()};  // Open's file dialog: Cancel
            if (step == Record)
                w.record();
            else if (step == New)
                f.app->advancedWindow().newScript();
            else
                basic ? f.app->basicWindow().openButton->click() : f.app->advancedWindow().openAction->trigger();
            QCOMPARE(f.dialogs.asked.size(), size_t(asks ? 1 : 0));
            QCOMPARE(f.dialogs.paths.empty(), step == Open && !asks);
            QCOMPARE(f.app->recorder.recording, !asks && step == Record);
            QCOMPARE(w.widget->isVisible(), asks || step != Record);
            QCOMPARE(w.text(), asks || step == Record ? text : kTemplate);
            if (asks) {
                QCOMPARE(f.dialogs.asked.front(), QString("There is an existing script open. If you %1 a new script "
                                                          "Tarvoke will delete the existing script. Do you wish to "
                                                          "continue?").arg(step == Record ? "record" : basic ? "open" : "create"));
                QCOMPARE(w.widget->windowTitle(), "Tarvoke - old.tk");
                QCOMPARE(f.app->filePath, "/x/old.tk");
                if (!basic) {  // the edit stays, and Undo still takes it back
                    QCOMPARE(f.app->advancedWindow().changed(), text != kTemplate);
                    f.app->advancedWindow().editor->undo();
                    QCOMPARE(w.text(), kTemplate);
                }
            }
            w.stop();
        }
    }

    // Ctrl+8 is still down at the start; in Advanced Mode its two releases
    // are left out, in Basic Mode and after a menu start they stay. The
    // window is away while it records; Stop puts the framed recording into
    // the editor as a new script. Ctrl+6 and Ctrl+7 in it change the settings
    // for good: the program's flags, settings.dat, the Settings dialog, Basic
    // Mode's boxes, the next recording.
    void recordingByHotkeyOrMenu() {
        // Basic Mode, started by Ctrl+8, the releases left out.
        const std::tuple<bool, bool, bool> rows[] = {{false, true, true}, {false, false, false}, {true, true, false}};
        for (const auto& [basic, byHotkey, dropped] : rows) {
            AppFixture f;
            Window w = windowOf(*f.app, basic);
            w.widget->show();
            w.setText("");
            f.app->filePath = "/x/old.tk";
            f.app->recorder.startedByHotkey = true;  // left from an earlier start, and
            f.app->recorder.mouseMoves = f.app->recorder.extendedClicks = false;  // the start takes the program's
            for (uint8_t key : {kCtrl, kLeftCtrl, kEight}) f.keys.press(key);
            byHotkey ? w.timers->pollHotkeys() : w.record();
            QVERIFY(f.app->recorder.recording && !w.widget->isVisible());
            QVERIFY(f.app->recorder.mouseMoves && f.app->recorder.extendedClicks);
            w.timers->pollHotkeys();  // held: no second start
            f.keys.releaseAll();
            QTRY_COMPARE(f.app->recorder.linesOffered, 2);
            f.keys.press(kA);
            QTRY_VERIFY(f.app->recorder.script.find("KeyDown(65);") != std::string::npos);  // the sampler's timer
            // What Ctrl+6 and Ctrl+7 do in a recording (their keys: the recorder part of playback_test).
            f.app->recorder.mouseMoves = f.app->recorder.extendedClicks = false;
            w.stop();
            QVERIFY(!f.app->recorder.recording && w.widget->isVisible());
            const QStringList lines = w.text().replace(QRegularExpression("Pause\\(\\d+\\);"), "Pause(t);").split('\n');
            QStringList expected = {"Pause(t);", "KeyUp(56);", "Pause(t);", "KeyUp(162);", "Pause(t);", "KeyDown(65);",
                                    "Pause(t);"};
            // Inside the recorder's frame (its lines: the recorder part of playback_test).
            QCOMPARE(lines.mid(4, lines.size() - 4 - 2), dropped ? expected.mid(4) : expected);
            QCOMPARE(w.widget->windowTitle(), basic ? "Tarvoke Basic Mode - Untitled" : "Tarvoke - Untitled");
            QVERIFY(f.app->filePath.empty());
            QVERIFY(!f.app->mouseMove && !f.app->extendedClicks);
            QCOMPARE(f.readFile("settings.dat"), "1,0,0,0,1,");
            SettingsDialog dialog(*f.app);
            QVERIFY(!dialog.mouseMoveBox->isChecked() && !dialog.extendedClicksBox->isChecked());
            if (basic) QVERIFY(!f.app->basicWindow().mouseMoveBox->isChecked() && !f.app->basicWindow().extendedClicksBox->isChecked());
            w.record();
            QVERIFY(!f.app->recorder.mouseMoves && !f.app->recorder.extendedClicks);
            w.stop();
        }
    }

    // Correct Time from both windows, hidden or behind the white overlay; the Debug window.
    // The fake clock's pauses pass at once: the measure is whatever the run
    // took, and the percentage in the text follows it. Cancel leaves the
    // window, its text and its timers as they were.
    void calibratesTheCallingWindowsText() {
        using Answer = Dialogs::Answer;
        const QString script = "Function(Main);\nOrigionalPlayTime(0.5);\nsetpausepercent(100);\nPause(1500);\nEndFunction();";
        for (const bool basic : {false, true})
            for (const Answer answer : {Answer::No, Answer::Yes, Answer::Cancel}) {
                AppFixture f;
                Window w = windowOf(*f.app, basic);
                w.widget->show();
                w.setText(script);
                // Yes and No through the two-way question that the three-way one falls back on.
                if (answer == Answer::Cancel)
                    f.dialogs.threeWay = {answer};
                else
                    f.dialogs.answers = {answer == Answer::Yes};
                basic ? f.app->basicWindow().correctTimeButton->click() : f.app->advancedWindow().correctTimeAction->trigger();
                QCOMPARE(f.dialogs.asked, std::vector<QString>{"Do you wish to use the White Debug mode?"});
                if (answer == Answer::Cancel) {
                    QVERIFY(w.widget->isVisible() && !f.app->whiteDebugWindow().isVisible());
                    QVERIFY(!w.timers->correctTimeTimerOn() && !w.timers->playTimerOn());
                    QCOMPARE(w.text(), script);
                    QVERIFY(f.dialogs.told.isEmpty());
                    continue;
                }
                const bool white = answer == Answer::Yes;
                QVERIFY(!w.widget->isVisible());
                QCOMPARE(w.timers->correctTimeTimerOn(), !white);  // Ctrl+1 only in the hidden run
                QCOMPARE(f.app->whiteDebugWindow().isVisible(), white);
                QTRY_COMPARE(f.dialogs.told.size(), 1);
                QVERIFY(w.widget->isVisible() && !f.app->whiteDebugWindow().isVisible());
                QVERIFY(!w.timers->correctTimeTimerOn() && (!white || w.timers->hotkeyPollOn()));
                const QString prefix = ": Time took: ", suffix = " seconds out of Origional Play Time: 0.5 seconds";
                QString measured = f.dialogs.told.front();
                QVERIFY2(measured.startsWith(prefix) && measured.endsWith(suffix), qPrintable(measured));
                measured = measured.mid(prefix.size()).chopped(suffix.size());
                const QString percent = QString::number(measured.toDouble() * 200, 'g', 15);
                QCOMPARE(w.text(), QString(script).replace("setpausepercent(100);", "SetPausePercent(" + percent + ");"));
                if (white) {  // Function(Main), three statements, SetPausePercent once more
                    const WhiteDebugWindow& overlay = f.app->whiteDebugWindow();
                    QCOMPARE(QStringList({overlay.lineCount->text(), overlay.totalTime->text(), overlay.currentTime->text()}),
                             QStringList({"5", "0.5", measured}));
                }
            }
    }

    // Each Get Debug appends a dump and scrolls to its end.
    void debugWindowAppendsDumps() {
        AppFixture f;
        std::string script = "Function(Main);\nSet(n, 1);\nEndFunction();";
        f.app->engine.initialize(script);
        for (int i = 0; i < 30; ++i) f.app->advancedWindow().debugAction->trigger();
        DebugWindow& debug = f.app->debugWindow();
        QVERIFY(debug.isVisible());
        debug.getDebugButton->click();
        const QString text = debug.dumps->toPlainText();
        QCOMPARE(text.count("Printing Code:\nCommand: function; Parameters: main"), 31);
        QVERIFY(text.endsWith("Printing Found Variables:\n\n\n\n"));
        QVERIFY(debug.dumps->verticalScrollBar()->maximum() > 0);
        QCOMPARE(debug.dumps->verticalScrollBar()->value(), debug.dumps->verticalScrollBar()->maximum());
    }

    // Compile in Advanced Mode, and Open of what it wrote.
    void compileWritesTheProgramAndOpenReadsItBack() {
        struct Row {
            const char* name;
            QString path;  // from the dialog; "" is Cancel
            bool runtime, repeat;
            QString told, file;  // the box, and the file expected ("" none)
        };
        const Row rows[] = {
            {"Cancel", "", true, true, "Error: Invalid Filename!", ""},
            {"no extension, repeat", "prog", true, true, "Compiled: Tarvoke executable was compiled.", "prog.exe"},
            {"one run", "once.exe", true, false, "Compiled: Tarvoke executable was compiled.", "once.exe"},
            {"no runtime", "kept.exe", false, false, "Error: Could not create exectuable!", ""},
        };
        for (const Row& row : rows) {
            AppFixture f;
            if (row.runtime) f.writeFile("Compiler.dll", "RUNTIME!");
            f.writeFile("kept.exe", "old");
            AdvancedWindow& w = f.app->advancedWindow();
            w.setText("Function(Main);\nMsgBox(\"Hi There\");\nEndFunction();");
            f.dialogs.paths = {row.path.isEmpty() ? QString() : f.qpath(row.path)};
            f.dialogs.answers = {row.repeat};
            w.compileAction->trigger();
            QCOMPARE(f.dialogs.told.value(0), row.told);
            QCOMPARE(f.dialogs.lastIcon, row.told.startsWith("Error") ? Dialogs::Icon::Stop : Dialogs::Icon::Exclamation);
            QCOMPARE(f.readFile("kept.exe"), QByteArray("old"));  // a failed compile leaves it
            if (row.file.isEmpty()) continue;
            const QByteArray body = "function(main);msgbox(Hi There);endfunction();";
            QCOMPARE(f.readFile(row.file), "RUNTIME" + QByteArray(row.repeat ? "1" : "0") + body + QByteArray("\x08\0\0\0", 4));
            QVERIFY(QFileInfo(f.qpath(row.file)).isExecutable());

            // Open reads the body back, one statement a line, as a new script.
            f.dialogs.paths = {f.qpath(row.file)};
            w.openScript();
            QCOMPARE(w.text(), "function(main);\nmsgbox(Hi There);\nendfunction();\n");
            QCOMPARE(w.windowTitle(), "Tarvoke");
            QVERIFY(f.app->filePath.empty());
        }
    }

    // Every window lays its controls out without clipping or overlap, at the scale of the
    // run: app/windows at 100%, app/layout_at_2x at 200%.
    // Basic Mode also at its smallest size, below which its layout does not go.
    void everyWindowFitsItsControls() {
        AppFixture f("1,1,1,0,1,");
        App& app = *f.app;
        SettingsDialog settings(app);
        AboutDialog about;
        FindDialog find(app.advancedWindow());
        const QList<QPair<QString, QWidget*>> windows = {
            {"splash", &app.splashWindow()}, {"choice", &app.modeChoiceWindow()}, {"Advanced Mode", &app.advancedWindow()},
            {"Basic Mode", &app.basicWindow()}, {"settings", &settings}, {"about", &about}, {"find", &find},
            {"Basic Mode at its smallest", &app.basicWindow()}};
        for (const auto& [name, window] : windows) {
            if (name.endsWith("smallest")) window->resize(window->minimumSizeHint());
            const QStringList faults = layoutFaults(*window);
            QVERIFY2(faults.isEmpty(), qPrintable(name + ": " + faults.join("; ")));
        }
    }

    // Advanced Mode: files and captions, questions before text is lost, editing,
    // Find and Replace, path rules, the file's text, the language in the editor.
    void captionsFollowTheFileOperations() {
        AppFixture f;
        AdvancedWindow& window = f.app->advancedWindow();
        // A file that holds no compiled script opens nothing and says so (the
        // kinds of such files: playback_test); a name in capitals is a script.
        f.writeFile("tool.exe", "binary");
        f.writeFile("first.TK.EXE", "Function(Main);\r\nPause(5);\r\nEndFunction();\r\n");
        f.dialogs.paths = {f.qpath("tool.exe"), f.qpath("first.TK.EXE")};
        window.openScript();
        QCOMPARE(f.dialogs.told, QStringList{"Tarvoke: This file holds no compiled script."});
        QCOMPARE(window.windowTitle(), "Tarvoke");
        QCOMPARE(window.text(), kTemplate);
        QVERIFY(f.app->filePath.empty());
        window.openScript();
        QCOMPARE(window.windowTitle(), "Tarvoke - first.TK.EXE");
        QCOMPARE(window.text(), "Function(Main);\nPause(5);\nEndFunction();\n");
        QCOMPARE(f.app->filePath, f.path("first.TK.EXE"));
        QCOMPARE(f.app->session.scriptFolder, f.path(""));
        window.setText(kTemplate);
        window.newScript();  // the untouched template: no question
        QCOMPARE(window.windowTitle(), "Tarvoke");
        QVERIFY(f.app->filePath.empty());
        window.readmeAction->trigger();  // the guide beside the program
        QCOMPARE(f.dialogs.opened, QStringList{f.qpath("readme.txt")});
    }

    // A save that the folder refuses keeps the old file, the caption and the
    // path, and says why; once the folder takes files again, Save writes there.
    void failedSaveKeepsTheOldFileAndSaysWhy() {
        AppFixture f;
        AdvancedWindow& window = f.app->advancedWindow();
        f.writeFile("kept.tk", "old text");
        f.dialogs.paths = {f.qpath("kept.tk")};
        window.openScript();
        window.setText("new text");
        {
            testing::ReadOnlyFolder readOnly(f.folder.path());
            if (!readOnly.ok()) QSKIP("cannot make a read-only folder here");
            window.saveScript();
            QCOMPARE(f.readFile("kept.tk"), QByteArray("old text"));
            QCOMPARE(f.dialogs.told.size(), 1);
            const QString said = "Tarvoke: The script could not be saved: ";
            QVERIFY(f.dialogs.told[0].startsWith(said) && f.dialogs.told[0].size() > said.size());
            f.dialogs.paths = {f.qpath("elsewhere.tk")};
            window.saveScriptAs();
            QCOMPARE(window.windowTitle(), "Tarvoke - kept.tk");
            QCOMPARE(f.app->filePath, f.path("kept.tk"));
            QCOMPARE(f.app->session.scriptFolder, f.path(""));
            QCOMPARE(QDir(f.folder.path()).entryList(QDir::Files), QStringList{"kept.tk"});
        }
        window.saveScript();  // no dialog is left to ask: it writes to the path
        QCOMPARE(f.readFile("kept.tk"), QByteArray("new text"));
    }

    // Closing the window, File Exit, or closing Basic Mode, to which a switch
    // takes the text changed since the last New, Open or Save with its mark:
    // Save, Discard or Cancel; a Save that does not happen keeps the program
    // open. A switch back keeps the editor's Undo.
    void closingOffersToSaveChanges() {
        enum Way { Close, Exit, InBasicMode };
        struct {
            bool typed;
            Choice choice;
            QString file;    // the script's path: "" none yet, "dir" a folder
            QString saveAs;  // what the Save As dialog returns
            bool closes, saved;  // saved: script.tk holds the typed text
        } const rows[] = {{false, Choice::Cancel, "script.tk", "", true, false},
                          {true, Choice::Discard, "script.tk", "", true, false},
                          {true, Choice::Cancel, "script.tk", "", false, false},
                          {true, Choice::Save, "script.tk", "", true, true},
                          {true, Choice::Save, "", "script.tk", true, true},
                          {true, Choice::Save, "", "", false, false},
                          {true, Choice::Save, "dir", "", false, false}};
        for (const auto& [typed, choice, file, saveAs, closes, saved] : rows)
            for (const Way way : {Close, Exit, InBasicMode}) {
                // Basic Mode's Save always asks for a name: as with no file yet.
                if (way == InBasicMode && choice == Choice::Save && !file.isEmpty()) continue;
                AppFixture f;
                AdvancedWindow& window = f.app->advancedWindow();
                f.writeFile("script.tk", "old");
                QDir(f.folder.path()).mkdir("dir");
                if (!file.isEmpty()) {
                    f.dialogs.paths = {f.qpath(file)};
                    window.openScript();
                    f.app->filePath = f.path(file);  // a folder does not open
                }
                if (typed) QTest::keyClicks(window.editor, "Pause(1);");
                f.dialogs.saveChoices = {choice};
                f.dialogs.paths = {saveAs.isEmpty() ? QString() : f.qpath(saveAs)};
                if (way == InBasicMode) {
                    window.switchToBasicMode();
                    f.app->basicWindow().close();
                    f.app->basicWindow().switchToAdvancedMode();
                }
                way == Exit ? window.exitAction->trigger() : void(way == Close && window.close());
                QCOMPARE(f.dialogs.asked.size(), size_t(typed ? 1 + (saveAs.isEmpty() ? 0 : 1) : 0));
                QCOMPARE(f.exits, closes ? 1 : 0);
                QCOMPARE(f.readFile("settings.dat"), closes ? "1,1,1,0,1," : "<missing>");  // saved at the exit
                QCOMPARE(f.readFile("script.tk"), saved ? window.text().toUtf8() : QByteArray("old"));
                QCOMPARE(window.changed(), typed && !saved);
                QCOMPARE(f.dialogs.told.size(), file == "dir" ? 1 : 0);
                window.editor->undo();
                QCOMPARE(window.text(), file == "script.tk" ? "old" : kTemplate);
            }
    }

    // Save As asks before it replaces what is there; through a symbolic link
    // it writes the file the link leads to, and the link stays.
    void saveAsAsksBeforeReplacing() {
        // What is at the chosen name ("", "file" or "link"), and the answer.
        const std::pair<QString, bool> rows[] = {{"", true}, {"file", true}, {"file", false}, {"link", true}};
        for (const auto& [there, yes] : rows) {
            AppFixture f;
            AdvancedWindow& window = f.app->advancedWindow();
            f.writeFile("real.tk", "old");
            if (there == "file") f.writeFile("chosen.tk", "old");
            if (there == "link") QFile::link("real.tk", f.qpath("chosen.tk"));
            window.editText("new");
            f.dialogs.answers = {yes};
            f.dialogs.paths = {f.qpath("chosen")};
            QCOMPARE(window.saveScriptAs(), yes);
            QCOMPARE(f.dialogs.asked.size(), size_t(there.isEmpty() ? 0 : 1));
            QCOMPARE(f.readFile("chosen.tk"), QByteArray(yes ? "new" : "old"));
            QCOMPARE(QFileInfo(f.qpath("chosen.tk")).isSymLink(), there == "link");
            QCOMPARE(f.readFile("real.tk"), QByteArray(there == "link" ? "new" : "old"));
            QCOMPARE(window.windowTitle(), yes ? "Tarvoke - chosen.tk" : "Tarvoke");
            QCOMPARE(f.app->filePath, yes ? f.path("chosen.tk") : "");
            QCOMPARE(window.changed(), !yes);
        }
    }

    // CR LF becomes "\n"; bytes that are not UTF-8 are read as Latin-1.
    void scriptBytesBecomeEditorText() {
        const auto latin1 = [](const char* bytes) { return QString::fromLatin1(bytes); };
        const std::pair<QByteArray, QString> rows[] = {
            {"a\r\nb\r\n", "a\nb\n"}, {"a\rb", "a\rb"}, {"caf\xc3\xa9", QString::fromUtf8("caf\xc3\xa9")},
            {"caf\xe9!", latin1("caf\xe9!")}, {"x\xe2\x82", latin1("x\xe2\x82")},  // a cut sequence
            {"\xc0\xaf", latin1("\xc0\xaf")}, {"\xed\xa0\x80", latin1("\xed\xa0\x80")},  // overlong, surrogate
            {"\xf0\x9f\x98\x80", QString::fromUtf8("\xf0\x9f\x98\x80")}};
        for (const auto& [bytes, text] : rows) QCOMPARE(decodeScriptBytes(bytes), text);
    }

    void pathRules() {
        // The path, whether it is valid, and what is left of it.
        const std::tuple<const char*, bool, const char*> rows[] = {
            {"/home/a/s.tk", true, "/home/a/s.tk"}, {"", false, ""},  {" ", false, " "}, {".", false, "."},
            {"s.tk", false, "s.tk"}, {"/a/\tb\r\n.tk", true, "/a/b.tk"}, {"\r\n", false, ""},
            {"/2024/a:b*?.tk", true, "/2024/a:b*?.tk"}};
        for (const auto& [path, valid, cleaned] : rows) {
            std::string text = path;
            QCOMPARE(isValidPath(text), valid);
            QCOMPARE(QString::fromStdString(text), cleaned);
        }
    }

    // Find's steps on a text; the dialog takes the selection, Find Next walks
    // the hits and reports the end, and a later dialog starts behind the
    // caret. Replace All: every occurrence, exact in case, as one step that
    // Undo takes back. Delete: one character, or the selection.
    void findReplaceAndDelete() {
        struct {
            const char* text;
            int caret;
            bool down, matchCase;  // matchCase searches "ab", else "AB"
            bool fresh;
            int findFrom, hit;  // hit -1: not found
        } const searches[] = {{"ab ab ab", 0, true, false, true, 0, 0},  {"ab ab ab", 0, true, false, false, 0, 3},
                              {"ab ab ab", 1, true, false, false, 0, 3}, {"ab ab ab", 7, true, false, false, 0, -1},
                              {"xx AB", 0, true, false, true, 0, 3},     {"xx AB ab", 0, true, true, true, 0, 6},
                              {"ab ab", 0, false, false, true, 0, -1},   {"ab ab ab", 8, false, false, true, 0, 6},
                              {"ab ab ab", 3, false, false, false, 3, 0}};
        for (const auto& row : searches) {
            FindState state{row.matchCase ? "ab" : "AB", row.matchCase, row.down, row.findFrom, row.fresh};
            const auto found = findOnce(row.text, row.caret, state);
            QCOMPARE(found ? found->start : -1, row.hit);
            QCOMPARE(state.findFrom, found ? found->start : row.caret);
            QVERIFY(!state.fresh);
        }

        AppFixture f;
        AdvancedWindow& window = f.app->advancedWindow();
        window.setText("Pause(1);\nPause(2);\nPause(3);");
        window.findNext();  // nothing searched yet: nothing happens
        QVERIFY(f.dialogs.told.empty());
        select(window, 0, 5);
        FindDialog find(window);
        QCOMPARE(find.findEdit->text(), "Pause");
        find.findEdit->setText("pause");
        select(window, 0, 0);
        find.search();
        QCOMPARE(selectionOf(window), (Selection{0, 5}));
        for (int start : {10, 20, 20}) {
            window.findNext();
            QCOMPARE(selectionOf(window), (Selection{start, 5}));
        }
        QCOMPARE(f.dialogs.told, QStringList{": Cannot find \"pause\""});
        select(window, 0, 0);
        FindDialog again(window);
        again.findEdit->setText("pause");
        again.search();
        QCOMPARE(selectionOf(window), (Selection{10, 5}));

        const std::tuple<QString, QString, QString, QString> replacements[] = {
            {"Pause(1);Pause(2);", "Pause", "PauseS", "PauseS(1);PauseS(2);"},
            {"pause Pause", "Pause", "x", "pause x"}, {"abc", "", "x", "abc"}, {"a;b;", ";", "", "ab"}};
        for (const auto& [text, sought, replacement, result] : replacements) {
            window.setText(text);
            ReplaceDialog dialog(window);
            dialog.findEdit->setText(sought);
            dialog.replacementEdit->setText(replacement);
            dialog.replaceAll();
            QCOMPARE(window.text(), result);
            QCOMPARE(window.changed(), result != text);
            window.editor->undo();
            QCOMPARE(window.text(), text);
        }
        window.setText("ab\ncd");
        const std::tuple<int, int, const char*> steps[] = {{2, 0, "abcd"}, {1, 2, "ad"}, {2, 0, "ad"}};
        for (const auto& [start, length, result] : steps) {
            select(window, start, length);
            window.deleteText();
            QCOMPARE(window.text(), result);
        }
    }

    // Colours as the loader reads the text; the checker's findings (every
    // kind: tests/scripts/check/findings.tk) underlined with their message as
    // a tooltip, listed by F7, and a click in the list goes there; Ctrl+G
    // goes to a line.
    void editorShowsTheLanguage() {
        AppFixture f;
        AdvancedWindow& window = f.app->advancedWindow();
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        const QString text = "Function(Main);\n"
                             "  LeftClik(); MoveMouse(-640, x1);\n"
                             "SendKeys(\"a#b#c\", 0x4G);#a\n"
                             "comment#Pause(1)\n"
                             "Pause(2);\n"
                             "LeftClick(1,2,3,4,5,6,7,8,9);\n"
                             "EndFunction();\n"
                             "Function(Main);EndFunction();RightClick;\n"
                             "# never closed";
        window.setText(text);
        const struct {
            int line, column;
            Token token;
        } rows[] = {{1, 0, Token::Command},        {1, 8, Token::Plain},         {2, 2, Token::UnknownCommand},
                    {2, 10, Token::Plain},         {2, 14, Token::Command},      {2, 24, Token::Number},
                    {2, 27, Token::Number},        {2, 31, Token::Plain},        {3, 9, Token::Quoted},
                    {3, 11, Token::Comment},       {3, 13, Token::Comment},      {3, 14, Token::Quoted},
                    {3, 18, Token::Hex},           {3, 21, Token::Hex},          {3, 25, Token::Comment},
                    {4, 0, Token::Comment},        {4, 7, Token::Comment},       {4, 8, Token::Command},
                    {4, 14, Token::Number},        {5, 0, Token::Plain},         {6, 0, Token::Command}};
        for (const auto& row : rows)
            QVERIFY2(tokenAt(window, row.line, row.column) == row.token,
                     qPrintable(QString("line %1 column %2").arg(row.line).arg(row.column)));

        QTest::keyClick(window.windowHandle(), Qt::Key_F7);
        QVERIFY(window.checkDock->isVisible());
        // Where each finding is underlined, and what the list says of it.
        const struct {
            int line, column;
            const char* listed;
        } findings[] = {{2, 2, "2:3: unknown command `leftclik`, did you mean `leftclick`?"},
                        {2, 30, "2:31: parameter 2 of `movemouse`: `x1` is no number, and no variable of that name "
                                "is ever written"},
                        {3, 18, "3:19: `sendkeys` reads 1 parameter, this statement has 2"},
                        {3, 18, "3:19: `0x4g` starts with `0x` but is no even run of hex digits"},
                        {6, 26, "6:27: 9 parameters: a statement keeps at most 8, so all are dropped"},
                        {8, 9, "8:10: function `main` is defined twice; `call` enters the first, on line 1"},
                        {8, 39, "8:40: `;` dropped: no `(` and `)` since the last statement, so the text runs on"},
                        {9, 0, "9:1: comment never closed: the rest of the file is ignored"}};
        QCOMPARE(window.checkList->count(), std::size(findings));
        for (size_t i = 0; i < std::size(findings); ++i) {
            const auto& [line, column, listed] = findings[i];
            QCOMPARE(window.checkList->item(i)->text(), listed);
            QVERIFY(underlinedAt(window, line, column) && !underlinedAt(window, line, column - 1));
            const QPoint point = pointAt(window, line, column);
            QHelpEvent help(QEvent::ToolTip, point, window.editor->viewport()->mapToGlobal(point));
            QApplication::sendEvent(window.editor->viewport(), &help);
            QVERIFY(QToolTip::text().split('\n').contains(QString(listed).section(": ", 1)));
            emit window.checkList->itemActivated(window.checkList->item(i));
            const QTextCursor caret = window.editor->textCursor();
            QCOMPARE(caret.blockNumber() + 1, line);
            QCOMPARE(caret.positionInBlock(), column);
        }
        QVERIFY(!underlinedAt(window, 1, 0));
        // An edit of the line hides its marks until the next check, which
        // comes once typing pauses.
        emit window.checkList->itemActivated(window.checkList->item(0));
        QTest::keyClick(window.editor, Qt::Key_Space);
        QVERIFY(!underlinedAt(window, findings[0].line, findings[0].column + 1));
        QTRY_VERIFY(underlinedAt(window, findings[0].line, findings[0].column + 1));

        // A "#" typed at the top of a long script: the lines in view change at
        // once, the others while the program waits for input.
        window.setText(QString("Pause(1);\n").repeated(3 * ScriptHighlighter::kLinesAtOnce));
        window.checkScript();
        while (window.editor->highlighter->pending()) QCoreApplication::processEvents();
        window.editor->goTo(1);
        QTest::keyClick(window.editor, Qt::Key_NumberSign);
        QCOMPARE(tokenAt(window, 100, 0), Token::Comment);
        QVERIFY(window.editor->highlighter->pending());
        while (window.editor->highlighter->pending()) QCoreApplication::processEvents();
        QCOMPARE(tokenAt(window, window.editor->blockCount() - 1, 0), Token::Comment);
        // A line too long to colour still opens its comment.
        window.setText("Pause(1);" + QString(ScriptHighlighter::kColouredLineLimit, ' ') + "#\nPause(1);#\nPause(1);");
        QCOMPARE(tokenAt(window, 1, 0), Token::Plain);
        QCOMPARE(tokenAt(window, 2, 0), Token::Comment);
        QCOMPARE(tokenAt(window, 3, 0), Token::Command);
        window.editText(text);

        f.dialogs.numbers = {4, 99};
        for (const int line : {4, 9}) {  // 99 goes to the last line
            QTest::keyClick(window.windowHandle(), Qt::Key_G, Qt::ControlModifier);
            QCOMPARE(window.editor->textCursor().blockNumber() + 1, line);
        }
        QTest::keyClick(window.windowHandle(), Qt::Key_G, Qt::ControlModifier);  // Cancel
        QCOMPARE(window.editor->textCursor().blockNumber() + 1, 9);
    }
};

QTEST_MAIN(WindowsTest)
#include "windows_test.moc"
