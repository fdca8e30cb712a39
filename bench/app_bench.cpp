// Speed of the windows: the start of a play of a long recording (load and
// hide), opening and checking a 10 MB script in the editor, a keystroke with
// it open (colours and findings on) and at the end of one line of 100,000
// characters, and how soon Ctrl+0 acts while a script runs.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTest>
#include <chrono>

#include "app/advancedwindow.h"
#include "app_fixture.h"

using namespace tarvoke;
using app::testing::AppFixture;

namespace {

// A recording of statements statements, in the recorder's dialect.
QString recordedScript(int statements) {
    QString text = "Function(Main);\nOrigionalPlayTime(1000);\nSetPausePercent(100);\n";
    for (int i = 0; i < statements / 2; ++i)
        text += QString("Pause(%1);\nMoveMouse(%2, %3);\n").arg(i % 40).arg(i % 1920).arg(i % 1080);
    return text + "EndFunction();";
}

// The clock of the program: a yield handles Qt's pending events.
class EventLoopClock : public platform::Clock {
public:
    void yield() override { QCoreApplication::processEvents(); }
    void wait(int32_t) override { yield(); }
    void cancelWaits() override {}
    int64_t monotonicMs() override { return 0; }
};

void BM_PlayStartOfARecording(benchmark::State& state) {
    AppFixture f("1,1,1,0,0,");
    app::AdvancedWindow& main = f.app->advancedWindow();
    main.setText(recordedScript(static_cast<int>(state.range(0))));
    for (auto _ : state) {
        state.PauseTiming();
        main.show();
        QCoreApplication::processEvents();
        state.ResumeTiming();
        main.playScript();  // stop, copy, load, hide, timer on
        state.PauseTiming();
        main.stopScript();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_PlayStartOfARecording)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(5);

// A 10 MB recording with a mistake every 100,000 statements, so that the
// editor has findings to underline.
QString tenMegabytes() {
    QString text = recordedScript(20);
    while (text.size() < 10 * 1024 * 1024) text += "LeftClik();\n" + recordedScript(100000);
    return text;
}

void BM_Open10MBScript(benchmark::State& state) {
    AppFixture f("1,1,1,0,0,");
    app::AdvancedWindow& main = f.app->advancedWindow();
    const QString text = tenMegabytes();
    for (auto _ : state) {
        main.setText(text);  // the lines in view are coloured; the rest follow while idle
        main.checkScript();
        state.PauseTiming();
        main.editor->highlighter->finish();
        main.setText("");
        state.ResumeTiming();
    }
}
BENCHMARK(BM_Open10MBScript)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_KeystrokeIn10MBScript(benchmark::State& state) {
    AppFixture f("1,1,1,0,0,");
    app::AdvancedWindow& main = f.app->advancedWindow();
    main.setText(tenMegabytes());
    main.editor->highlighter->finish();  // every line coloured
    main.checkScript();
    main.resize(800, 600);
    main.show();
    QCoreApplication::processEvents();
    main.editor->moveCursor(QTextCursor::End);
    main.editor->setFocus();
    for (auto _ : state) {
        QTest::keyClick(main.editor, Qt::Key_X);
        main.editor->viewport()->repaint();
    }
    if (main.checkList->count() < 2) state.SkipWithError("no findings to underline");
}
BENCHMARK(BM_KeystrokeIn10MBScript)->Unit(benchmark::kMillisecond)->Iterations(50);

// The worst keystroke: a "#" at the top turns every line behind it into a
// comment, and each line is coloured anew.
void BM_CommentOpenedAtTheTopOf10MBScript(benchmark::State& state) {
    AppFixture f("1,1,1,0,0,");
    app::AdvancedWindow& main = f.app->advancedWindow();
    main.setText(tenMegabytes());
    main.editor->highlighter->finish();
    main.resize(800, 600);
    main.show();
    QCoreApplication::processEvents();
    main.editor->moveCursor(QTextCursor::Start);
    main.editor->setFocus();
    for (auto _ : state) {
        QTest::keyClick(main.editor, Qt::Key_NumberSign);
        main.editor->viewport()->repaint();
        state.PauseTiming();
        QTest::keyClick(main.editor, Qt::Key_Backspace);
        state.ResumeTiming();
    }
}
BENCHMARK(BM_CommentOpenedAtTheTopOf10MBScript)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_KeystrokeInALongLine(benchmark::State& state) {
    AppFixture f("1,1,1,0,0,");
    app::AdvancedWindow& main = f.app->advancedWindow();
    QString line;
    while (line.size() < state.range(0))
        line += QString("MoveMouse(%1, %2);Pause(40);").arg(line.size() % 1920).arg(line.size() % 1080);
    main.setText(line.left(state.range(0)));
    main.resize(800, 600);
    main.show();
    QCoreApplication::processEvents();
    main.editor->moveCursor(QTextCursor::End);
    main.editor->setFocus();
    for (auto _ : state) {
        // Through the window, as the platform delivers a key: shortcuts and
        // input method queries first, then the edit; then the repaint.
        QTest::keyClick(main.windowHandle(), Qt::Key_X);
        QCoreApplication::processEvents();
    }
    if (main.text().size() != state.range(0) + state.iterations()) state.SkipWithError("the keys did not arrive");
}
BENCHMARK(BM_KeystrokeInALongLine)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_HotkeyStopsARun(benchmark::State& state) {
    AppFixture f("1,1,1,0,0,");
    EventLoopClock clock;
    f.app->session.platform.clock = &clock;
    app::AdvancedWindow& main = f.app->advancedWindow();
    main.setText("Function(Main);\nWhile(1 = 1);\nPause(5);\nEndWhile();\nEndFunction();");
    for (auto _ : state) {
        QElapsedTimer pressed;
        QTimer::singleShot(5, [&] {
            f.keys.press(17);
            f.keys.press(48);
            pressed.start();
        });
        main.playScript();
        f.app->playback.tick();  // returns once Ctrl+0 has stopped the run
        state.SetIterationTime(pressed.nsecsElapsed() / 1e9);
        f.keys.releaseAll();
    }
}
BENCHMARK(BM_HotkeyStopsARun)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(50);

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
