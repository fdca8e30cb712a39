// Recording from both windows: the question before a script is replaced,
// start and stop, Ctrl+8, Ctrl+6 and Ctrl+7.

#include <QCheckBox>
#include <QRegularExpression>
#include <QtTest>

#include "app/settingsdialog.h"
#include "app_fixture.h"

using namespace tarvoke::app;
using namespace tarvoke::app::testing;

namespace {

enum Key : uint8_t { kCtrl = 17, kSix = 54, kSeven = 55, kEight = 56, kA = 65, kLeftCtrl = 162 };

// Whether the recording holds the line yet (the sampler's timer adds it).
bool recorded(AppFixture& f, const std::string& line) { return f.app->recorder.script.find(line) != std::string::npos; }

// The recording with its times taken out, one entry a line.
QStringList withoutTimes(QString script) {
    script.replace(QRegularExpression("Pause\\(\\d+\\);"), "Pause(t);");
    script.replace(QRegularExpression("OrigionalPlayTime\\(\\d+\\.\\d+\\);"), "OrigionalPlayTime(t);");
    return script.split('\n');
}

}  // namespace

class RecordingTest : public QObject {
    Q_OBJECT

private slots:
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
            for (uint8_t digit : {kSix, kSeven}) {
                f.keys.press(kCtrl);
                f.keys.press(kLeftCtrl);
                QTRY_VERIFY(recorded(f, "KeyDown(162);"));
                f.keys.press(digit);
                const bool& flag = digit == kSix ? f.app->recorder.mouseMoves : f.app->recorder.extendedClicks;
                QTRY_VERIFY(!flag);
                f.keys.releaseAll();
                QTRY_VERIFY(!f.app->recorder.skipNextLine);  // the Ctrl release swallowed
            }
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
};

QTEST_MAIN(RecordingTest)
#include "recording_test.moc"
