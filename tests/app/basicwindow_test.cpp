// Basic Mode: its file operations, the switch between the modes, the play
// options and the hotkeys.

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QtTest>

#include "app/advancedwindow.h"
#include "app/basicwindow.h"
#include "app_fixture.h"

using namespace tarvoke::app;
using namespace tarvoke::app::testing;
using Choice = Dialogs::SaveChoice;

class BasicWindowTest : public QObject {
    Q_OBJECT

private slots:
    // Each switch takes the text and the script's name along and moves the
    // hotkey poll and the playback's view; a bare caption is not carried.
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

    void firstSwitchToAdvancedModeTurnsTheOptionsOn() {
        AppFixture f("0,0,0,0,1,");
        BasicWindow& basic = f.app->basicWindow();
        basic.switchToAdvancedMode();
        QVERIFY(f.app->session.repeat && f.app->mouseMove && f.app->extendedClicks);
        QVERIFY(!basic.repeatOption->isChecked());  // shown at the first load only
    }

    void openAsksEvenForTheTemplateAndNoEndsIt() {
        AppFixture f;
        BasicWindow& basic = f.app->basicWindow();
        f.writeFile("a.tk", "Pause(1);");
        f.dialogs.answers = {false};
        f.dialogs.paths = {f.qpath("a.tk")};
        basic.openScript();
        QCOMPARE(f.dialogs.asked.size(), size_t(1));
        QVERIFY(f.dialogs.asked[0].contains("If you open a new script"));
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode");
        basic.openScript();
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode - a.tk");
        QCOMPARE(basic.text(), "Pause(1);");
    }

    void saveNeedsSomethingAndAlwaysAsks() {
        AppFixture f;
        BasicWindow& basic = f.app->basicWindow();
        f.dialogs.paths = {f.qpath("never.tk")};
        basic.saveScript();
        QCOMPARE(f.dialogs.paths.size(), size_t(1));  // not asked
        basic.setWindowTitle("Tarvoke Basic Mode - Untitled");
        basic.saveScript();
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode - never.tk");
        QCOMPARE(f.readFile("never.tk"), kTemplate.toUtf8());
        basic.saveScript();  // asks again: cancelled this time
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode - never.tk");
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

    void hotkeysActOnTheWindowInUse() {
        AppFixture f("1,1,1,0,0,");
        AdvancedWindow& advanced = f.app->advancedWindow();
        advanced.show();
        advanced.switchToBasicMode();
        BasicWindow& basic = f.app->basicWindow();
        f.keys.press(17);  // Ctrl+9 plays Basic Mode's script
        f.keys.press(57);
        basic.timers().pollHotkeys();
        QVERIFY(basic.timers().playTimerOn() && !basic.isVisible());
        QVERIFY(!advanced.timers().playTimerOn());
        f.keys.press(48);  // Ctrl+0 stops and shows the window at once
        basic.timers().pollHotkeys();
        QVERIFY(!basic.timers().playTimerOn() && basic.isVisible());
        QVERIFY(!advanced.isVisible());
        basic.timers().pollHotkeys();  // held down: nothing more
        QVERIFY(!basic.timers().playTimerOn());
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
};

QTEST_MAIN(BasicWindowTest)
#include "basicwindow_test.moc"
