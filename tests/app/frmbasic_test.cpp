// Basic Mode: its file operations, the switch between the modes, and the
// play options.

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QtTest>

#include "app/frmbasic.h"
#include "app/frmmain.h"
#include "app_fixture.h"

using namespace tarvoke::app;
using tarvoke::app::testing::AppFixture;

Q_DECLARE_METATYPE(tarvoke::app::Dialogs::SaveChoice)

class FrmBasicTest : public QObject {
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
        FrmMain& main = f.app->frmMain();
        main.show();
        main.setWindowTitle(mainCaption);
        main.setText("Function(Main);\nPause(1);\nEndFunction();");
        main.mnuFileBasicMode_Click();
        FrmBasic& basic = f.app->frmBasic();
        QVERIFY(basic.isVisible() && !main.isVisible());
        QCOMPARE(basic.windowTitle(), basicCaption);
        QCOMPARE(basic.text(), "Function(Main);\nPause(1);\nEndFunction();");
        QVERIFY(f.app->bBasicMode);
        QVERIFY(basic.timers().inputsTimerOn() && !main.timers().inputsTimerOn());
        QCOMPARE(f.app->playback.view(), &basic.timers());

        basic.setText("changed");
        basic.cmdAdvanced_Click();
        QVERIFY(main.isVisible() && !basic.isVisible());
        QCOMPARE(main.windowTitle(), mainCaption);
        QCOMPARE(main.text(), "changed");
        QVERIFY(!f.app->bBasicMode);
        QVERIFY(main.timers().inputsTimerOn() && !basic.timers().inputsTimerOn());
        QCOMPARE(f.app->playback.view(), &main.timers());
    }

    void bareCaptionIsNotCarried() {
        AppFixture f("1,1,1,0,1,", true);
        FrmMain& main = f.app->frmMain();
        main.setWindowTitle("Tarvoke - before.tk");
        main.mnuFileBasicMode_Click();
        FrmBasic& basic = f.app->frmBasic();
        basic.setWindowTitle("Tarvoke Basic Mode");
        basic.cmdAdvanced_Click();
        QCOMPARE(main.windowTitle(), "Tarvoke - before.tk");
    }

    void firstSwitchToAdvancedModeTurnsTheOptionsOn() {
        AppFixture f("0,0,0,0,1,", true);
        FrmBasic& basic = f.app->frmBasic();
        basic.cmdAdvanced_Click();
        QVERIFY(f.app->session.repeat && f.app->bMouseMove && f.app->bExtendedClicks);
        QVERIFY(!basic.optRepeat->isChecked());  // shown at the first load only
    }

    void openAsksEvenForTheTemplateAndNoEndsIt() {
        AppFixture f;
        FrmBasic& basic = f.app->frmBasic();
        f.writeFile("a.tk", "Function(Main);\nEndFunction();");
        f.dialogs.answers = {false};
        f.dialogs.paths = {QString::fromStdString(f.path("a.tk"))};
        basic.cmdOpen_Click();
        QCOMPARE(f.dialogs.asked.size(), size_t(1));
        QVERIFY(f.dialogs.asked[0].contains("If you open a new script"));
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode");
        basic.cmdOpen_Click();
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode - a.tk");
        QCOMPARE(basic.text(), "Function(Main);\nEndFunction();");
    }

    void saveNeedsSomethingAndAlwaysAsks() {
        AppFixture f;
        FrmBasic& basic = f.app->frmBasic();
        f.dialogs.paths = {QString::fromStdString(f.path("never.tk"))};
        basic.SaveScript();
        QCOMPARE(f.dialogs.paths.size(), size_t(1));  // not asked
        basic.setWindowTitle("Tarvoke Basic Mode - Untitled");
        basic.SaveScript();
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode - never.tk");
        QCOMPARE(f.readFile("never.tk"), kTemplate.toUtf8());
        basic.SaveScript();  // asks again: cancelled this time
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
        FrmMain& main = f.app->frmMain();
        QTest::keyClicks(main.txtLog, "Pause(1);");
        const QString typed = main.text();
        main.mnuFileBasicMode_Click();
        FrmBasic& basic = f.app->frmBasic();
        QCOMPARE(basic.windowTitle(), "Tarvoke Basic Mode");
        f.dialogs.saveChoices = {choice};
        f.dialogs.paths = {name.isEmpty() ? QString() : QString::fromStdString(f.path(name))};
        basic.close();
        QCOMPARE(f.dialogs.asked.size(), size_t(1));
        QCOMPARE(f.exits, closes ? 1 : 0);
        QCOMPARE(f.readFile("kept.tk"), name.isEmpty() ? QByteArray("<missing>") : typed.toUtf8());
        basic.cmdAdvanced_Click();
        QCOMPARE(main.changed(), name.isEmpty());
        main.txtLog->undo();
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
        FrmBasic& basic = f.app->frmBasic();
        basic.show();
        basic.optPlayX->click();
        basic.txtPlayX->setText(count);
        basic.cmdPlay_Click();
        QCOMPARE(basic.timers().playTimerOn(), starts);
        QCOMPARE(basic.isVisible(), !starts);
        if (starts) {
            QVERIFY(f.dialogs.told.empty());
            QCOMPARE(f.app->playback.playTarget(), target);
            QVERIFY(f.app->session.repeat);
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
        FrmBasic& basic = f.app->frmBasic();
        basic.show();
        basic.setText("Function(Main);\nMessage(run, normal, t);\nEndFunction();");
        basic.optPlayX->click();
        basic.txtPlayX->setText(count);
        basic.cmdPlay_Click();
        for (int tick = 0; tick < 10 && basic.timers().playTimerOn(); ++tick) f.app->playback.tick();
        QCOMPARE(int(std::count_if(f.fake.transcript.begin(), f.fake.transcript.end(),
                                   [](const std::string& line) { return line.starts_with("MessageBox"); })),
                 runs);
        QVERIFY(basic.isVisible());
        QVERIFY(f.app->session.repeat);
    }

    void hotkeysActOnTheWindowInUse() {
        AppFixture f("1,1,1,0,0,", true);
        FrmMain& main = f.app->frmMain();
        main.show();
        main.mnuFileBasicMode_Click();
        FrmBasic& basic = f.app->frmBasic();
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
        FrmBasic& basic = f.app->frmBasic();
        basic.optPlayOnce->click();
        QVERIFY(!f.app->session.repeat);
        basic.optRepeat->click();
        QVERIFY(f.app->session.repeat);
        basic.optPlayX->click();
        QVERIFY(!f.app->session.repeat);
    }
};

QTEST_MAIN(FrmBasicTest)
#include "frmbasic_test.moc"
