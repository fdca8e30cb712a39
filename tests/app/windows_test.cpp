// The program's windows on the fake platform, offscreen: start-up, Basic
// Mode, recording, Correct Time, Compile and every window's layout. (Advanced
// Mode's editing and files: advancedwindow_test.cpp.)

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QtTest>
#include <sys/stat.h>

#include "app/aboutdialog.h"
#include "app/advancedwindow.h"
#include "app/basicwindow.h"
#include "app/debugwindow.h"
#include "app/finddialog.h"
#include "app/modechoicewindow.h"
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

// Whether the recording holds the line yet (the sampler's timer adds it).
bool recorded(AppFixture& f, const std::string& line) { return f.app->recorder.script.find(line) != std::string::npos; }

// The recording with its times taken out, one entry a line.
QStringList withoutTimes(QString script) {
    script.replace(QRegularExpression("Pause\\(\\d+\\);"), "Pause(t);");
    script.replace(QRegularExpression("OrigionalPlayTime\\(\\d+\\.\\d+\\);"), "OrigionalPlayTime(t);");
    return script.split('\n');
}

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

}  // namespace

class WindowsTest : public QObject {
    Q_OBJECT

private slots:
    // Start-up: settings.dat and where it lives, the splash, the mode choice.
    // The file's text and the five flags as read; a settings.dat that is no
    // file gives the defaults, as a missing one does: no abort, no wait on a FIFO.
    void settingsFileAsRead() {
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

    void settingsFolderFollowsTheEnvironment() {
        QTemporaryDir program, config;
        const auto folder = [&] { return QString::fromStdString(settingsFolder(program.path().toStdString()).string()); };
        qputenv("TARVOKE_SETTINGS_DIR", "/somewhere/else");
        QCOMPARE(folder(), "/somewhere/else");
        qunsetenv("TARVOKE_SETTINGS_DIR");
        QCOMPARE(folder(), program.path());
        qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
        testing::ReadOnlyFolder readOnly(program.path());
        if (!readOnly.ok()) QSKIP("cannot make a read-only folder here");
        QCOMPARE(folder(), config.path() + "/tarvoke");
        QVERIFY(QFileInfo(config.path() + "/tarvoke").isDir());
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
    // always asks for a name; Open asks even over the template, and a No ends it.
    void basicModeSaveAndOpen() {
        AppFixture f;
        BasicWindow& basic = f.app->basicWindow();
        f.writeFile("a.tk", "Pause(1);");
        f.dialogs.paths = {f.qpath("never.tk")};
        basic.saveScript();
        QCOMPARE(f.dialogs.paths.size(), size_t(1));  // not asked
        f.dialogs.answers = {false};
        f.dialogs.paths = {f.qpath("a.tk"), f.qpath("b.tk")};
        basic.openScript();
        QCOMPARE(f.dialogs.asked.size(), size_t(1));
        QVERIFY(f.dialogs.asked[0].contains("If you open a new script"));
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode");
        basic.openScript();
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode - a.tk");
        QCOMPARE(basic.text(), "Pause(1);");
        basic.saveScript();
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode - b.tk");
        QCOMPARE(f.readFile("b.tk"), "Pause(1);");
        basic.saveScript();  // asks again: cancelled this time
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode - b.tk");
    }

    // Changed text takes its mark along to Basic Mode, whose closing offers
    // to save it (under the bare caption too, asking for a name); a switch
    // back keeps the editor's Undo.
    void changedTextIsOfferedOnCloseInBasicMode() {
        // The answer, what the Save dialog returns, whether the program ends.
        const std::tuple<Choice, QString, bool> rows[] = {{Choice::Cancel, "", false}, {Choice::Discard, "", true},
                                                          {Choice::Save, "kept.tk", true}, {Choice::Save, "", false}};
        for (const auto& [choice, name, closes] : rows) {
            AppFixture f("1,1,1,0,0,");
            AdvancedWindow& advanced = f.app->advancedWindow();
            QTest::keyClicks(advanced.editor, "Pause(1);");
            const QString typed = advanced.text();
            advanced.switchToBasicMode();
            BasicWindow& basic = f.app->basicWindow();
            QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode");
            f.dialogs.saveChoices = {choice};
            f.dialogs.paths = {name.isEmpty() ? QString() : f.qpath(name)};
            basic.close();
            QCOMPARE(f.dialogs.asked.size(), size_t(1));
            QCOMPARE(f.exits, closes ? 1 : 0);
            QCOMPARE(f.readFile("kept.tk"), name.isEmpty() ? QByteArray("<missing>") : typed.toUtf8());
            basic.switchToAdvancedMode();
            QCOMPARE(advanced.changed(), name.isEmpty());
            advanced.editor->undo();
            QCOMPARE(advanced.text(), kTemplate);
        }
    }

    // Play X: a count that is not numeric is refused; the script runs the
    // count's times, at least once, and the window comes back.
    void playXRunsTheStatedNumberOfTimes() {
        // The count, the target it sets (-1: refused), the runs.
        const std::tuple<const char*, int, int> rows[] = {{"3", 3, 3},      {"1", 1, 1},     {"2.5", 2, 2},
                                                          {"1e1", 10, 10},  {"0", 0, 1},     {"abc", -1, 0},
                                                          {"", -1, 0},      {"1e12", -1, 0}};
        for (const auto& [count, target, runs] : rows) {
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
            QVERIFY(f.app->session.repeat);
            for (int tick = 0; tick < 20 && basic.timers().playTimerOn(); ++tick) f.app->playback.tick();
            QCOMPARE(int(std::count_if(f.fake.transcript.begin(), f.fake.transcript.end(),
                                       [](const std::string& line) { return line.starts_with("MessageBox"); })),
                     runs);
            QVERIFY(basic.isVisible());
            QVERIFY(f.app->session.repeat);
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
    // New and Record ask before they replace a script; a No keeps everything.
    void askedBeforeAScriptIsLost() {
        enum Step { New, Record };
        const QString script = "Function(Main);\nPause(1);\nEndFunction();";
        // Basic Mode, the step, the text, whether the step asks.
        const std::tuple<bool, Step, QString, bool> rows[] = {
            {false, New, "", false},          {false, New, kTemplate, false},   {false, New, kTemplate + "\n", false},
            {false, New, kTemplate + "\n\n", true}, {false, New, script, true},  {false, Record, "", false},
            {false, Record, kTemplate, true}, {false, Record, script, true},    {true, Record, "", false},
            {true, Record, kTemplate, false}, {true, Record, kTemplate + "\n", true}, {true, Record, script, true}};
        for (const auto& [basic, step, text, asks] : rows) {
            AppFixture f;
            Window w = windowOf(*f.app, basic);
            w.widget->show();
            w.setText(text);
            w.widget->setWindowTitle("Tarvoke - old.tk");
            f.app->filePath = "/x/old.tk";
            f.dialogs.answers = {false};
            step == New ? void(f.app->advancedWindow().newScript()) : w.record();
            QCOMPARE(f.dialogs.asked.size(), size_t(asks ? 1 : 0));
            QCOMPARE(f.app->recorder.recording, !asks && step == Record);
            QCOMPARE(w.widget->isVisible(), asks || step == New);
            QCOMPARE(w.text(), asks || step == Record ? text : kTemplate);
            if (asks) {
                QCOMPARE(f.dialogs.asked.front(), QString("There is an existing script open. If you %1 a new script "
                                                          "Tarvoke will delete the existing script. Do you wish to "
                                                          "continue?").arg(step == New ? "create" : "record"));
                QCOMPARE(w.widget->windowTitle(), "Tarvoke - old.tk");
                QCOMPARE(f.app->filePath, "/x/old.tk");
            }
            w.stop();
        }
    }

    // Ctrl+8 is still down at the start; in Advanced Mode its two releases
    // are left out, in Basic Mode and after a menu start they stay. The
    // window is away while it records; Stop puts the framed recording into
    // the editor as a new script.
    void hotkeyStartLeavesOutItsOwnReleases() {
        // Basic Mode, started by Ctrl+8, the releases left out.
        const std::tuple<bool, bool, bool> rows[] = {{false, true, true}, {false, false, false}, {true, true, false}};
        for (const auto& [basic, byHotkey, dropped] : rows) {
            AppFixture f;
            Window w = windowOf(*f.app, basic);
            w.widget->show();
            w.setText("");
            f.app->filePath = "/x/old.tk";
            f.app->recorder.startedByHotkey = true;  // left from an earlier start
            for (uint8_t key : {kCtrl, kLeftCtrl, kEight}) f.keys.press(key);
            byHotkey ? w.timers->pollHotkeys() : w.record();
            QVERIFY(f.app->recorder.recording && !w.widget->isVisible());
            w.timers->pollHotkeys();  // held: no second start
            f.keys.releaseAll();
            QTRY_COMPARE(f.app->recorder.linesOffered, 2);
            f.keys.press(kA);
            QTRY_VERIFY(recorded(f, "KeyDown(65);"));
            w.stop();
            QVERIFY(!f.app->recorder.recording && w.widget->isVisible());
            const QStringList lines = withoutTimes(w.text());
            QStringList expected = {"Pause(t);", "KeyUp(56);", "Pause(t);", "KeyUp(162);", "Pause(t);", "KeyDown(65);",
                                    "Pause(t);"};
            QCOMPARE(lines.mid(4, lines.size() - 4 - 2), dropped ? expected.mid(4) : expected);
            QCOMPARE(lines.mid(0, 4) + lines.mid(lines.size() - 2),
                     QStringList({"Function(Main);", "OrigionalPlayTime(t);", "SetPausePercent(100);", "", "",
                                  "EndFunction();"}));
            QCOMPARE(w.widget->windowTitle(), basic ? "Tarvoke Basic Mode - Untitled" : "Tarvoke - Untitled");
            QVERIFY(f.app->filePath.empty());
        }
    }

    // Ctrl+6 and Ctrl+7 change the settings for good: the program's flags,
    // settings.dat, the Settings dialog, Basic Mode's boxes, the next start.
    void ctrlSixAndSevenChangeTheSettingsForGood() {
        for (const bool basic : {false, true}) {
            AppFixture f;
            Window w = windowOf(*f.app, basic);
            w.setText("");
            f.app->mouseMove = f.app->extendedClicks = true;
            w.record();
            QVERIFY(f.app->recorder.mouseMoves && f.app->recorder.extendedClicks);
            // What Ctrl+6 and Ctrl+7 do in a recording (their keys: recorder_test).
            f.app->recorder.mouseMoves = f.app->recorder.extendedClicks = false;
            w.stop();
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
        const std::pair<bool, Answer> rows[] = {{false, Answer::No}, {false, Answer::Yes}, {false, Answer::Cancel},
                                                {true, Answer::No},  {true, Answer::Yes},  {true, Answer::Cancel}};
        for (const auto& [basic, answer] : rows) {
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
            QVERIFY(w.compileAction->isEnabled());
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
};

QTEST_MAIN(WindowsTest)
#include "windows_test.moc"
