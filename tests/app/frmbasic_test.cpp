// Basic Mode: its file operations, the switch between the modes, and the
// play options.

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QtTest>

#include "app/basicwindow.h"
#include "app/advancedwindow.h"
#include "app_fixture.h"

using namespace tarvoke::app;
using tarvoke::app::testing::AppFixture;

Q_DECLARE_METATYPE(tarvoke::app::Dialogs::SaveChoice)

class BasicWindowTest : public QObject {
    Q_OBJECT

private slots:
    void switchesCarryTextAndCaption_data() {
        QTest::addColumn<QString>("mainCaption");
        QTest::addColumn<QString>("basicCaption");
        QTest::newRow("a file") << "Tarvoke - job.tk" << "Tarvoke Basic Mode - job.tk";
        QTest::newRow("a recording") << "Tarvoke - Untitled" << "Tarvoke Basic Mode - Untitled";
    }
    void switchesCarryTextAndCaption() {
        QFETCH(QString, mainCaption);
        QFETCH(QString, basicCaption);
        AppFixture f("1,1,1,0,0,", true);
        AdvancedWindow& main = f.app->advancedWindow();
        main.show();
        main.setWindowTitle(mainCaption);
        main.setText("Function(Main);\nPause(1);\nEndFunction();");
        main.switchToBasicMode();
        BasicWindow& basic = f.app->basicWindow();
        QVERIFY(basic.isVisible() && !main.isVisible());
        QCOMPARE(basic.windowTitle(), basicCaption);
        QCOMPARE(basic.text(), "Function(Main);\nPause(1);\nEndFunction();");
        QVERIFY(f.app->basicMode);
        QVERIFY(basic.timers().hotkeyPollOn() && !main.timers().hotkeyPollOn());
        QCOMPARE(f.app->playback.view(), &basic.timers());

        basic.setText("changed");
        basic.switchToAdvancedMode();
        QVERIFY(main.isVisible() && !basic.isVisible());
        QCOMPARE(main.windowTitle(), mainCaption);
        QCOMPARE(main.text(), "changed");
        QVERIFY(!f.app->basicMode);
        QVERIFY(main.timers().hotkeyPollOn() && !basic.timers().hotkeyPollOn());
        QCOMPARE(f.app->playback.view(), &main.timers());
    }

    void bareCaptionIsNotCarried() {
        AppFixture f("1,1,1,0,1,", true);
        AdvancedWindow& main = f.app->advancedWindow();
        main.setWindowTitle("Tarvoke - before.tk");
        main.switchToBasicMode();
        BasicWindow& basic = f.app->basicWindow();
        basic.setWindowTitle("Tarvoke Basic Mode");
        basic.switchToAdvancedMode();
        QCOMPARE(main.windowTitle(), "Tarvoke - before.tk");
    }

    void firstSwitchToAdvancedModeTurnsTheOptionsOn() {
        AppFixture f("0,0,0,0,1,", true);
        BasicWindow& basic = f.app->basicWindow();
        basic.switchToAdvancedMode();
        QVERIFY(f.app->session.bRepeat && f.app->mouseMove && f.app->extendedClicks);
        QVERIFY(!basic.repeatOption->isChecked());  // shown at the first load only
    }

    void openAsksEvenForTheTemplateAndNoEndsIt() {
        AppFixture f;
        BasicWindow& basic = f.app->basicWindow();
        f.writeFile("a.tk", "Function(Main);\nEndFunction();");
        f.dialogs.answers = {false};
        f.dialogs.paths = {QString::fromStdString(f.path("a.tk"))};
        basic.openScript();
        QCOMPARE(f.dialogs.asked.size(), size_t(1));
        QVERIFY(f.dialogs.asked[0].contains("If you open a new script"));
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode");
        basic.openScript();
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode - a.tk");
        QCOMPARE(basic.text(), "Function(Main);\nEndFunction();");
    }

    void saveNeedsSomethingAndAlwaysAsks() {
        AppFixture f;
        BasicWindow& basic = f.app->basicWindow();
        f.dialogs.paths = {QString::fromStdString(f.path("never.tk"))};
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
    void changedTextIsOfferedOnCloseInBasicMode_data() {
        using Choice = Dialogs::SaveChoice;
        QTest::addColumn<Choice>("choice");
        QTest::addColumn<QString>("name");  // what the Save dialog returns
        QTest::addColumn<bool>("closes");
        QTest::newRow("Cancel") << Choice::Cancel << "" << false;
        QTest::newRow("Discard") << Choice::Discard << "" << true;
        QTest::newRow("Save") << Choice::Save << "kept.tk" << true;
        QTest::newRow("Save, name cancelled") << Choice::Save << "" << false;
    }
    void changedTextIsOfferedOnCloseInBasicMode() {
        QFETCH(Dialogs::SaveChoice, choice);
        QFETCH(QString, name);
        QFETCH(bool, closes);
        AppFixture f("1,1,1,0,0,", true);
        AdvancedWindow& main = f.app->advancedWindow();
        QTest::keyClicks(main.editor, "Pause(1);");
        const QString typed = main.text();
        main.switchToBasicMode();
        BasicWindow& basic = f.app->basicWindow();
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode");
        f.dialogs.saveChoices = {choice};
        f.dialogs.paths = {name.isEmpty() ? QString() : QString::fromStdString(f.path(name))};
        basic.close();
        QCOMPARE(f.dialogs.asked.size(), size_t(1));
        QCOMPARE(f.exits, closes ? 1 : 0);
        QCOMPARE(f.readFile("kept.tk"), name.isEmpty() ? QByteArray("<missing>") : typed.toUtf8());
        basic.switchToAdvancedMode();
        QCOMPARE(main.changed(), name.isEmpty());
        main.editor->undo();
        QCOMPARE(main.text(), kTemplate);
    }

    void playXCountMustBeNumeric_data() {
        QTest::addColumn<QString>("count");
        QTest::addColumn<bool>("starts");
        QTest::addColumn<int>("target");
        QTest::newRow("three") << "3" << true << 3;
        QTest::newRow("fraction rounds") << "2.5" << true << 2;
        QTest::newRow("exponent") << "1e1" << true << 10;
        QTest::newRow("zero") << "0" << true << 0;
        QTest::newRow("letters") << "abc" << false << 0;
        QTest::newRow("empty") << "" << false << 0;
        QTest::newRow("too big") << "1e12" << false << 0;
    }
    void playXCountMustBeNumeric() {
        QFETCH(QString, count);
        QFETCH(bool, starts);
        QFETCH(int, target);
        AppFixture f;
        BasicWindow& basic = f.app->basicWindow();
        basic.show();
        basic.playXOption->click();
        basic.playCountEdit->setText(count);
        basic.playScript();
        QCOMPARE(basic.timers().playTimerOn(), starts);
        QCOMPARE(basic.isVisible(), !starts);
        if (starts) {
            QVERIFY(f.dialogs.told.empty());
            QCOMPARE(f.app->playback.playTarget(), target);
            QVERIFY(f.app->session.bRepeat);
        } else {
            QCOMPARE(f.dialogs.told.size(), size_t(1));
            QCOMPARE(f.dialogs.told[0].title, "Error");
            QCOMPARE(f.dialogs.told[0].text, "The Play X times must be numeric!");
            QCOMPARE(f.dialogs.told[0].icon, Dialogs::Icon::Stop);
        }
    }

    void playXRunsTheStatedNumberOfTimes_data() {
        QTest::addColumn<QString>("count");
        QTest::addColumn<int>("runs");
        QTest::newRow("three") << "3" << 3;
        QTest::newRow("one") << "1" << 1;
        QTest::newRow("zero still runs once") << "0" << 1;
    }
    void playXRunsTheStatedNumberOfTimes() {
        QFETCH(QString, count);
        QFETCH(int, runs);
        AppFixture f;
        BasicWindow& basic = f.app->basicWindow();
        basic.show();
        basic.setText("Function(Main);\nMessage(run, normal, t);\nEndFunction();");
        basic.playXOption->click();
        basic.playCountEdit->setText(count);
        basic.playScript();
        for (int tick = 0; tick < 10 && basic.timers().playTimerOn(); ++tick) f.app->playback.tick();
        QCOMPARE(int(std::count_if(f.fake.transcript.begin(), f.fake.transcript.end(),
                                   [](const std::string& line) { return line.starts_with("MessageBox"); })),
                 runs);
        QVERIFY(basic.isVisible());
        QVERIFY(f.app->session.bRepeat);
    }

    void hotkeysActOnTheWindowInUse() {
        AppFixture f("1,1,1,0,0,", true);
        AdvancedWindow& main = f.app->advancedWindow();
        main.show();
        main.switchToBasicMode();
        BasicWindow& basic = f.app->basicWindow();
        f.keys.press(17);
        f.keys.press(57);  // Ctrl+9 plays Basic Mode's script
        basic.timers().pollHotkeys();
        QVERIFY(basic.timers().playTimerOn() && !basic.isVisible());
        QVERIFY(!main.timers().playTimerOn());
        f.keys.press(48);  // Ctrl+0 stops and shows the window at once
        basic.timers().pollHotkeys();
        QVERIFY(!basic.timers().playTimerOn() && basic.isVisible());
        QVERIFY(!main.isVisible());
        basic.timers().pollHotkeys();  // held down: nothing more
        QVERIFY(!basic.timers().playTimerOn());
    }

    void playOptionsSetRepeat() {
        AppFixture f;
        BasicWindow& basic = f.app->basicWindow();
        basic.playOnceOption->click();
        QVERIFY(!f.app->session.bRepeat);
        basic.repeatOption->click();
        QVERIFY(f.app->session.bRepeat);
        basic.playXOption->click();
        QVERIFY(!f.app->session.bRepeat);
    }
};

QTEST_MAIN(BasicWindowTest)
#include "frmbasic_test.moc"
