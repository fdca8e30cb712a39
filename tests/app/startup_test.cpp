// Start-up, settings.dat and the mode choice.

#include <QCheckBox>
#include <QRadioButton>
#include <QtTest>
#include <sys/stat.h>
#include <unistd.h>

#include "app/frmbasic.h"
#include "app/frmchoice.h"
#include "app/frmmain.h"
#include "app/frmsettings.h"
#include "app/frmsplash2.h"
#include "app/settings.h"
#include "app_fixture.h"

using namespace tarvoke::app;
using tarvoke::app::testing::AppFixture;

class StartupTest : public QObject {
    Q_OBJECT

private slots:
    void fieldsOfTheSettingsText_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");  // the five flags as read, "10110"
        QTest::newRow("defaults") << "1,1,1,0,1," << "11101";
        QTest::newRow("basic, pauses ignored") << "0,0,0,1,1," << "00011";
        QTest::newRow("last comma missing") << "1,1,1,1,1" << "11111";
        QTest::newRow("short file means Advanced Mode") << "1,1," << "11000";
        QTest::newRow("anything but 1 is false") << "-1,true,1 ,01,1," << "00001";
        QTest::newRow("empty") << "" << "00000";
        QTest::newRow("line break after the last field") << "1,1,1,1,1\r\n" << "11110";
    }
    void fieldsOfTheSettingsText() {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        const Settings s = parseSettings(text.toStdString());
        QString flags;
        for (bool b : {s.bRepeat, s.bMouseMove, s.bExtendedClicks, s.bIgnorePauses, s.bBasicMode}) flags += b ? '1' : '0';
        QCOMPARE(flags, expected);
    }

    void getFieldWalksTheCommas_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("field");
        QTest::newRow("first") << "a,b,c" << 1 << "a";
        QTest::newRow("rest without a comma") << "a,b,c" << 3 << "c";
        QTest::newRow("no such field") << "a,b," << 4 << "";
        QTest::newRow("empty field") << "a,,c," << 2 << "";
        QTest::newRow("index 0") << "a,b," << 0 << "";
    }
    void getFieldWalksTheCommas() {
        QFETCH(QString, text);
        QFETCH(int, index);
        QFETCH(QString, field);
        QCOMPARE(QString::fromStdString(GetField(text.toStdString(), static_cast<int16_t>(index))), field);
    }

    void firstStartAsksAndWritesTheDefaults() {
        AppFixture f;
        QVERIFY(f.app->bFirstRun);
        f.app->frmSplash2().ShowStartWindow();
        QVERIFY(f.app->frmChoice().isVisible());
        QVERIFY(!f.app->frmBasicLoaded() && !f.app->frmMainLoaded());
        QCOMPARE(f.readFile("settings.dat"), QByteArray("1,1,1,0,1,"));
    }

    void choiceOfAdvancedModeIsSaved() {
        AppFixture f;
        f.app->frmSplash2().ShowStartWindow();
        f.app->frmChoice().optAdvanced->setChecked(true);
        f.app->frmChoice().cmdOK_Click();
        QVERIFY(f.app->frmMain().isVisible());
        QVERIFY(!f.app->frmChoice().isVisible());
        QCOMPARE(f.readFile("settings.dat"), QByteArray("1,1,1,0,0,"));
    }

    void closingTheChoiceEndsTheProgram() {
        AppFixture f;
        f.app->frmSplash2().ShowStartWindow();
        f.app->frmChoice().close();
        QCOMPARE(f.exits, 1);
    }

    void basicModeShowsTheFlagsOfTheFile() {
        AppFixture f("0,0,0,1,1,", true);
        f.app->frmSplash2().ShowStartWindow();
        FrmBasic& basic = f.app->frmBasic();
        QVERIFY(basic.isVisible());
        QVERIFY(basic.timers().inputsTimerOn());
        QVERIFY(!basic.optRepeat->isChecked());
        QVERIFY(!basic.chkMM->isChecked());
        QVERIFY(!basic.chkEx->isChecked());
        QVERIFY(f.app->session.ignorePauses);
    }

    void advancedModeTurnsTheFirstThreeOn() {
        AppFixture f("0,0,0,1,0,", true);
        f.app->frmSplash2().ShowStartWindow();
        QVERIFY(f.app->frmMain().isVisible());
        QVERIFY(f.app->frmMain().mnuScriptRepeat->isChecked());
        f.app->frmMain().mnuExit_Click();
        QCOMPARE(f.exits, 1);
        QCOMPARE(f.readFile("settings.dat"), QByteArray("1,1,1,1,0,"));
    }

    void switchToBasicModeIsKeptForTheNextStart() {
        QByteArray saved;
        {
            AppFixture f("1,1,1,0,0,", true);
            f.app->frmSplash2().ShowStartWindow();
            f.app->frmMain().mnuFileBasicMode_Click();
            f.app->frmBasic().close();
            QCOMPARE(f.exits, 1);
            saved = f.readFile("settings.dat");
        }
        AppFixture next(saved, true);
        next.app->frmSplash2().ShowStartWindow();
        QVERIFY(next.app->frmBasicLoaded() && next.app->frmBasic().isVisible());
        QVERIFY(!next.app->frmMainLoaded());
    }

    void splashGoesOnByItsTimerAlone() {
        AppFixture f("1,1,1,0,1,", true);
        FrmSplash2& splash = f.app->frmSplash2();
        splash.show();
        splash.start();
        QTRY_VERIFY_WITH_TIMEOUT(f.app->frmBasicLoaded() && f.app->frmBasic().isVisible(), 3000);
        QVERIFY(!splash.isVisible());
        QVERIFY(!splash.tmr1.isActive() && !splash.tmrUpdate.isActive());
    }

    void settingsDialogCancelChangesNothing() {
        AppFixture f("1,0,1,0,1,", true);
        FrmSettings dialog(*f.app);
        QVERIFY(!dialog.chkMM->isChecked() && dialog.chkEx->isChecked() && !dialog.chkPrior->isChecked());
        dialog.chkMM->setChecked(true);
        dialog.chkPause->setChecked(true);
        dialog.chkPrior->setChecked(true);
        dialog.close();
        QVERIFY(!f.app->bMouseMove && !f.app->session.ignorePauses);
    }

    void settingsDialogOkTakesTheBoxes() {
        AppFixture f("1,0,1,0,1,", true);
        FrmSettings dialog(*f.app);
        dialog.chkMM->setChecked(true);
        dialog.chkEx->setChecked(false);
        dialog.chkPause->setChecked(true);
        dialog.cmdOK_Click();
        QVERIFY(f.app->bMouseMove && !f.app->bExtendedClicks && f.app->session.ignorePauses);
    }

    // A settings.dat that is no file gives the defaults, as a missing one
    // does: no abort, no wait on a FIFO.
    void unreadableSettingsGiveTheDefaults() {
        QTemporaryDir folder;
        const std::string path = folder.filePath("settings.dat").toStdString();
        for (const auto& make : {+[](const std::string& p) { return ::mkdir(p.c_str(), 0700); },
                                 +[](const std::string& p) { return ::mkfifo(p.c_str(), 0600); }}) {
            ::rmdir(path.c_str());
            ::unlink(path.c_str());
            QCOMPARE(make(path), 0);
            const LoadedSettings loaded = LoadSettings(path);
            QVERIFY(loaded.bFirstRun);
            QCOMPARE(formatSettings(loaded.settings), formatSettings(Settings{}));
        }
    }

    void settingsFolderFollowsTheEnvironment() {
        QTemporaryDir program, config;
        qputenv("TARVOKE_SETTINGS_DIR", "/somewhere/else");
        QCOMPARE(QString::fromStdString(settingsFolder(program.path().toStdString()).string()), "/somewhere/else");
        qunsetenv("TARVOKE_SETTINGS_DIR");
        QCOMPARE(QString::fromStdString(settingsFolder(program.path().toStdString()).string()), program.path());
        if (::geteuid() == 0) QSKIP("root writes into read-only folders");
        QFile::setPermissions(program.path(), QFile::ReadOwner | QFile::ExeOwner);
        qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
        QCOMPARE(QString::fromStdString(settingsFolder(program.path().toStdString()).string()),
                 config.path() + "/tarvoke");
        QVERIFY(QFileInfo(config.path() + "/tarvoke").isDir());
        QFile::setPermissions(program.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
};

QTEST_MAIN(StartupTest)
#include "startup_test.moc"
