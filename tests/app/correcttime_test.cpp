// Correct Time from both windows, hidden or behind the white overlay, and
// the Debug window.

#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QtTest>

#include "app/debugwindow.h"
#include "app/whitedebugwindow.h"
#include "app_fixture.h"
#include "engine/numeric.h"

using namespace tarvoke::app;
using namespace tarvoke::app::testing;

class CorrectTimeTest : public QObject {
    Q_OBJECT

private slots:
    // The run measures, rewrites the window's text and reports; the fake
    // clock's pauses pass at once, so the measure is whatever the run took.
    void calibratesTheCallingWindowsText() {
        const QString script =
            "Function(Main);\nOrigionalPlayTime(0.5);\nsetpausepercent(100);\nPause(1500);\nEndFunction();";
        for (bool basic : {false, true}) {
            for (bool white : {false, true}) {
                AppFixture f;
                Window w = windowOf(*f.app, basic);
                w.widget->show();
                w.setText(script);
                f.dialogs.answers = {white};
                basic ? f.app->basicWindow().correctTimeButton->click()
                      : f.app->advancedWindow().correctTimeAction->trigger();
                QCOMPARE(f.dialogs.asked, std::vector<QString>{"Do you wish to use the White Debug mode?"});
                QVERIFY(!w.widget->isVisible());
                QCOMPARE(w.timers->correctTimeTimerOn(), !white);  // Ctrl+1 only in the hidden run
                if (white) QVERIFY(f.app->whiteDebugWindow().isVisible());
                QTRY_COMPARE(f.dialogs.told.size(), 1);
                QVERIFY(w.widget->isVisible());
                if (white) QVERIFY(w.timers->hotkeyPollOn());  // given back by the overlay
                QVERIFY(!w.timers->correctTimeTimerOn());
                const QString report = f.dialogs.told.front();
                const QString prefix = ": Time took: ", suffix = " seconds out of Origional Play Time: 0.5 seconds";
                QVERIFY2(report.startsWith(prefix) && report.endsWith(suffix), qPrintable(report));
                const double measured = report.mid(prefix.size(), report.size() - prefix.size() - suffix.size()).toDouble();
                const QString percent = QString::fromStdString(tarvoke::engine::doubleToText(measured / 0.5 * 100));
                QCOMPARE(w.text(), QString(script).replace("setpausepercent(100);", "SetPausePercent(" + percent + ");"));
                if (white) {
                    WhiteDebugWindow& overlay = f.app->whiteDebugWindow();
                    QVERIFY(!overlay.isVisible());
                    // Function(Main), three statements, SetPausePercent once more.
                    QCOMPARE(overlay.lineCount->text(), QString("5"));
                    QCOMPARE(overlay.totalTime->text(), QString("0.5"));
                    QCOMPARE(overlay.currentTime->text().toDouble(), measured);
                }
            }
        }
    }

    // Each Get Debug appends a dump and scrolls to its end; the menu item
    // shows the window and takes one.
    void debugWindowAppendsDumps() {
        AppFixture f;
        AdvancedWindow& w = f.app->advancedWindow();
        std::string script = "Function(Main);\nSet(n, 1);\nEndFunction();";
        f.app->engine.initialize(script);
        for (int i = 0; i < 30; ++i) w.debugAction->trigger();
        DebugWindow& debug = f.app->debugWindow();
        QVERIFY(debug.isVisible());
        debug.getDebugButton->click();
        const QString text = debug.dumps->toPlainText();
        QCOMPARE(text.count("Printing Code:\nCommand: function; Parameters: main"), 31);
        QVERIFY(text.endsWith("Printing Found Variables:\n\n\n\n"));
        QScrollBar* bar = debug.dumps->verticalScrollBar();
        QVERIFY(bar->maximum() > 0);
        QCOMPARE(bar->value(), bar->maximum());
    }
};

QTEST_MAIN(CorrectTimeTest)
#include "correcttime_test.moc"
