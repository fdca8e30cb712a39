// Start-up: settings.dat, where it lives, the splash, the mode choice and
// the Settings dialog.

#include <QCheckBox>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>
#include <sys/stat.h>

#include "app/advancedwindow.h"
#include "app/basicwindow.h"
#include "app/modechoicewindow.h"
#include "app/settings.h"
#include "app/splashwindow.h"
#include "app_fixture.h"

using namespace tarvoke::app;
using namespace tarvoke::app::testing;

class StartupTest : public QObject {
    Q_OBJECT

private slots:
    void settingsText() {
        // The file's text and the five flags as read.
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

    // Advanced Mode turns the first three flags on; a switch to Basic Mode
    // is kept for the next start.
    void savedModeIsKeptForTheNextStart() {
        QByteArray saved;
        {
            AppFixture f("0,0,0,1,0,");
            f.app->splashWindow().showStartWindow();
            QVERIFY(f.app->advancedWindow().isVisible() && f.app->advancedWindow().repeatAction->isChecked());
            f.app->advancedWindow().switchToBasicMode();
            f.app->basicWindow().close();
            QCOMPARE(f.exits, 1);
            saved = f.readFile("settings.dat");
        }
        QCOMPARE(saved, "1,1,1,1,1,");
        AppFixture next(saved.constData());
        next.app->splashWindow().showStartWindow();
        QVERIFY(next.app->basicWindowLoaded() && next.app->basicWindow().isVisible());
        QVERIFY(!next.app->advancedWindowLoaded());
    }

    // Basic Mode shows the flags of the file.
    void splashGoesOnByItsTimerAlone() {
        AppFixture f("0,0,0,1,1,");
        SplashWindow& splash = f.app->splashWindow();
        splash.show();
        splash.start();
        QTRY_VERIFY_WITH_TIMEOUT(f.app->basicWindowLoaded() && f.app->basicWindow().isVisible(), 3000);
        QVERIFY(!splash.isVisible());
        QVERIFY(!splash.splashTimer.isActive() && !splash.updateCheckTimer.isActive());
        BasicWindow& basic = f.app->basicWindow();
        QVERIFY(basic.timers().hotkeyPollOn() && f.app->session.ignorePauses);
        QVERIFY(!basic.repeatOption->isChecked() && !basic.mouseMoveBox->isChecked() && !basic.extendedClicksBox->isChecked());
    }

    // A settings.dat that is no file gives the defaults, as a missing one
    // does: no abort, no wait on a FIFO.
    void unreadableSettingsGiveTheDefaults() {
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
};

QTEST_MAIN(StartupTest)
#include "startup_test.moc"
