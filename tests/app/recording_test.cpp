// Recording from the windows: the question before a recording replaces the
// script, the start and close in both modes, and the Ctrl+8 start.

#include <QAction>
#include <QCheckBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QtTest>
#include <functional>

#include "app/frmbasic.h"
#include "app/frmmain.h"
#include "app/frmsettings.h"
#include "app/settings.h"
#include "app_fixture.h"

using namespace tarvoke::app;
using tarvoke::app::testing::AppFixture;

namespace {

constexpr uint8_t kCtrl = 17;
constexpr uint8_t kLeftCtrl = 162;
constexpr uint8_t kEight = 56;
constexpr uint8_t kA = 65;
constexpr uint8_t kSix = 54;
constexpr uint8_t kSeven = 55;

// One of the two main windows, driven alike.
struct Window {
    QWidget* widget;
    std::function<void()> record;  // the menu item or the button
    std::function<void()> stop;
    std::function<QString()> text;
    std::function<void(const QString&)> setText;
    PlayTimers* timers;
};

Window open(AppFixture& f, bool basic) {
    if (basic) {
        FrmBasic& w = f.app->frmBasic();
        return {&w, [&w] { w.cmdRecord->click(); }, [&w] { w.StopScript(); }, [&w] { return w.text(); },
                [&w](const QString& t) { w.setText(t); }, &w.timers()};
    }
    FrmMain& w = f.app->frmMain();
    return {&w, [&w] { w.mnuScriptRecord->trigger(); }, [&w] { w.mnuScriptStop_Click(); },
            [&w] { return w.text(); }, [&w](const QString& t) { w.setText(t); }, &w.timers()};
}

// Lets the sampler's timer run until the recording holds the line.
bool recorded(AppFixture& f, const std::string& line) {
    QElapsedTimer waited;
    waited.start();
    while (f.app->recorder.script.find(line) == std::string::npos && waited.elapsed() < 5000)
        QTest::qWait(2);
    return f.app->recorder.script.find(line) != std::string::npos;
}

// The recording with its times taken out, one entry a line.
QStringList withoutTimes(const QString& script) {
    QString text = script;
    text.replace(QRegularExpression("Pause\\(\\d+\\);"), "Pause(t);");
    text.replace(QRegularExpression("OrigionalPlayTime\\(\\d+\\.\\d+\\);"), "OrigionalPlayTime(t);");
    return text.split('\n');
}

}  // namespace

class RecordingTest : public QObject {
    Q_OBJECT

private slots:
    void questionOnlyWhenAScriptWouldBeLost_data() {
        QTest::addColumn<bool>("basic");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("asks");
        const QString script = "Function(Main);\nPause(1);\nEndFunction();";
        QTest::newRow("advanced, empty") << false << "" << false;
        QTest::newRow("advanced, template") << false << kTemplate << true;
        QTest::newRow("advanced, a script") << false << script << true;
        QTest::newRow("basic, empty") << true << "" << false;
        QTest::newRow("basic, template") << true << kTemplate << false;
        QTest::newRow("basic, template and a line break") << true << kTemplate + "\n" << true;
        QTest::newRow("basic, a script") << true << script << true;
    }
    void questionOnlyWhenAScriptWouldBeLost() {
        QFETCH(bool, basic);
        QFETCH(QString, text);
        QFETCH(bool, asks);
        AppFixture f;
        Window w = open(f, basic);
        w.widget->show();
        w.setText(text);
        w.widget->setWindowTitle("Tarvoke - old.tk");
        f.app->sFilePath = "/x/old.tk";
        f.dialogs.answers = {false};
        w.record();
        QCOMPARE(f.dialogs.asked.size(), size_t(asks ? 1 : 0));
        QCOMPARE(f.app->recorder.recording, !asks);
        if (asks) {
            QCOMPARE(f.dialogs.asked.front(), "There is an existing script open. If you record a new script Tarvoke "
                                              "will delete the existing script. Do you wish to continue?");
            // No: everything as it was.
            QCOMPARE(w.text(), text);
            QCOMPARE(w.widget->windowTitle(), "Tarvoke - old.tk");
            QCOMPARE(f.app->sFilePath, "/x/old.tk");
            QVERIFY(w.widget->isVisible());
        } else {
            QVERIFY(!w.widget->isVisible());
        }
        w.stop();
    }

    void stopPutsTheFramedRecordingIntoTheEditor_data() {
        QTest::addColumn<bool>("basic");
        QTest::addColumn<QString>("caption");
        QTest::newRow("advanced") << false << "Tarvoke - Untitled";
        QTest::newRow("basic") << true << "Tarvoke Basic Mode - Untitled";
    }
    void stopPutsTheFramedRecordingIntoTheEditor() {
        QFETCH(bool, basic);
        QFETCH(QString, caption);
        AppFixture f;
        Window w = open(f, basic);
        w.widget->show();
        w.setText("");
        f.app->sFilePath = "/x/old.tk";
        w.record();
        QVERIFY(f.app->recorder.recording && !w.widget->isVisible());
        f.keys.press(kA);
        QVERIFY(recorded(f, "KeyDown(65);"));
        f.keys.releaseAll();
        QVERIFY(recorded(f, "KeyUp(65);"));
        w.stop();
        QVERIFY(!f.app->recorder.recording && w.widget->isVisible());
        QCOMPARE(withoutTimes(w.text()), QStringList({"Function(Main);", "OrigionalPlayTime(t);",
                                                     "SetPausePercent(100);", "", "Pause(t);", "KeyDown(65);",
                                                     "Pause(t);", "KeyUp(65);", "Pause(t);", "", "EndFunction();"}));
        QCOMPARE(w.widget->windowTitle(), caption);
        QVERIFY(f.app->sFilePath.empty());
        // The timers are off: nothing more is added.
        f.keys.press(kA);
        QTest::qWait(20);
        QVERIFY(!f.app->recorder.recording);
    }

    // Ctrl+8 is still down at the start; in Advanced Mode its two releases
    // are left out, in Basic Mode and after a menu start they stay.
    void hotkeyStartLeavesOutItsOwnReleases_data() {
        QTest::addColumn<bool>("basic");
        QTest::addColumn<bool>("byHotkey");
        QTest::addColumn<bool>("dropped");
        QTest::newRow("advanced, Ctrl+8") << false << true << true;
        QTest::newRow("advanced, menu after a Ctrl+8 start") << false << false << false;
        QTest::newRow("basic, Ctrl+8") << true << true << false;
    }
    void hotkeyStartLeavesOutItsOwnReleases() {
        QFETCH(bool, basic);
        QFETCH(bool, byHotkey);
        QFETCH(bool, dropped);
        AppFixture f;
        Window w = open(f, basic);
        w.setText("");
        f.app->recorder.startedByHotkey = true;  // left from an earlier start
        f.keys.press(kCtrl);
        f.keys.press(kLeftCtrl);
        f.keys.press(kEight);
        if (byHotkey)
            w.timers->pollHotkeys();
        else
            w.record();
        QVERIFY(f.app->recorder.recording);
        w.timers->pollHotkeys();  // held: no second start
        f.keys.releaseAll();
        QTRY_COMPARE(f.app->recorder.linesOffered, 2);
        f.keys.press(kA);
        QVERIFY(recorded(f, "KeyDown(65);"));
        w.stop();
        const QStringList lines = withoutTimes(w.text());
        const QStringList body = lines.mid(4, lines.size() - 4 - 2);
        QStringList expected = {"Pause(t);", "KeyUp(56);", "Pause(t);", "KeyUp(162);", "Pause(t);", "KeyDown(65);",
                                "Pause(t);"};
        if (dropped) expected = expected.mid(4);
        QCOMPARE(body, expected);
    }

    // Ctrl+6 and Ctrl+7 change the settings for good: the program's flags,
    // settings.dat, the Settings dialog, Basic Mode's boxes, the next start.
    void ctrlSixAndSevenChangeTheSettingsForGood_data() {
        QTest::addColumn<bool>("basic");
        QTest::newRow("advanced") << false;
        QTest::newRow("basic") << true;
    }
    void ctrlSixAndSevenChangeTheSettingsForGood() {
        QFETCH(bool, basic);
        AppFixture f;
        Window w = open(f, basic);
        w.setText("");
        f.app->bMouseMove = f.app->bExtendedClicks = true;
        w.record();
        for (uint8_t digit : {kSix, kSeven}) {
            f.keys.press(kCtrl);
            f.keys.press(kLeftCtrl);
            QVERIFY(recorded(f, "KeyDown(162);"));
            f.keys.press(digit);
            const bool& flag = digit == kSix ? f.app->recorder.mouseMoves : f.app->recorder.extendedClicks;
            QTRY_VERIFY(!flag);
            f.keys.releaseAll();
            QTRY_VERIFY(!f.app->recorder.skipNextLine);  // the Ctrl release swallowed
        }
        w.stop();
        QVERIFY(!f.app->bMouseMove && !f.app->bExtendedClicks);
        const Settings saved = parseSettings(f.readFile("settings.dat").toStdString());
        QVERIFY(!saved.bMouseMove && !saved.bExtendedClicks);
        FrmSettings dialog(*f.app);
        QVERIFY(!dialog.chkMM->isChecked() && !dialog.chkEx->isChecked());
        if (basic) QVERIFY(!f.app->frmBasic().chkMM->isChecked() && !f.app->frmBasic().chkEx->isChecked());
        w.record();
        QVERIFY(!f.app->recorder.mouseMoves && !f.app->recorder.extendedClicks);
        w.stop();
    }
};

QTEST_MAIN(RecordingTest)
#include "recording_test.moc"
