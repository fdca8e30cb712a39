// Correct Time from both windows, hidden or behind the white overlay, and
// the Debug window.

#include <QLabel>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QtTest>

#include "app/debugwindow.h"
#include "app/whitedebugwindow.h"
#include "app_fixture.h"

using namespace tarvoke::app;
using namespace tarvoke::app::testing;

class CorrectTimeTest : public QObject {
    Q_OBJECT

private slots:
    // The fake clock's pauses pass at once: the measure is whatever the run
    // took, and the percentage in the text follows it.
    void calibratesTheCallingWindowsText() {
        const QString script = "Function(Main);\nOrigionalPlayTime(0.5);\nsetpausepercent(100);\nPause(1500);\nEndFunction();";
        for (auto [basic, white] : {std::pair{false, false}, {false, true}, {true, false}, {true, true}}) {
            AppFixture f;
            Window w = windowOf(*f.app, basic);
            w.widget->show();
            w.setText(script);
            f.dialogs.answers = {white};
            basic ? f.app->basicWindow().correctTimeButton->click() : f.app->advancedWindow().correctTimeAction->trigger();
            QCOMPARE(f.dialogs.asked, std::vector<QString>{"Do you wish to use the White Debug mode?"});
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

    // Cancel in the question leaves the window, its text and its timers as they were.
    void cancelChangesNothing() {
        for (bool basic : {false, true}) {
            AppFixture f;
            Window w = windowOf(*f.app, basic);
            w.widget->show();
            w.setText("Function(Main);\nOrigionalPlayTime(0.5);\nSetPausePercent(100);\nEndFunction();");
            const QString before = w.text();
            f.dialogs.threeWay = {Dialogs::Answer::Cancel};
            basic ? f.app->basicWindow().correctTimeButton->click() : f.app->advancedWindow().correctTimeAction->trigger();
            QCOMPARE(f.dialogs.asked.size(), size_t{1});
            QVERIFY(w.widget->isVisible() && !f.app->whiteDebugWindow().isVisible());
            QVERIFY(!w.timers->correctTimeTimerOn() && !w.timers->playTimerOn());
            QCOMPARE(w.text(), before);
            QVERIFY(f.dialogs.told.isEmpty());
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
};

QTEST_MAIN(CorrectTimeTest)
#include "correcttime_test.moc"
