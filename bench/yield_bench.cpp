// The run loop with the player's real yield before every statement: Qt's
// event loop handles pending events (QCoreApplication::processEvents), as
// tools/tarvoke-play does, while a timer and a socket notifier are live as
// they are in the player.

#include <benchmark/benchmark.h>

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <unistd.h>

#include "benchscripts.h"
#include "platform/x11/clock.h"

namespace tarvoke::bench {
namespace {

// The sources the player watches during a run: its signal pipe and a timer.
class LiveSources {
public:
    LiveSources() {
        if (::pipe(m_pipe) == 0) m_notifier = new QSocketNotifier(m_pipe[0], QSocketNotifier::Read);
        m_timer.setInterval(10);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { ++ticks; });
        m_timer.start();
    }
    ~LiveSources() {
        delete m_notifier;
        ::close(m_pipe[0]);
        ::close(m_pipe[1]);
    }
    int64_t ticks = 0;

private:
    int m_pipe[2] = {-1, -1};
    QSocketNotifier* m_notifier = nullptr;
    QTimer m_timer;
};

void BM_YieldLoop(benchmark::State& state) {
    LiveSources sources;
    BenchEngine bench([] { QCoreApplication::processEvents(); });
    bench.load(countingLoop(static_cast<int32_t>(state.range(0))));
    const int64_t perRun = statementsRun(bench.engine);
    for (auto _ : state) bench.engine.Execute();
    reportStatements(state, perRun);
    state.counters["timer_ticks"] = static_cast<double>(sources.ticks);
    state.SetLabel(QCoreApplication::eventDispatcher()->metaObject()->className());
}
BENCHMARK(BM_YieldLoop)->Arg(100000)->Unit(benchmark::kMillisecond);

// The same loop with the real clock's yield, which gives the event loop a
// turn at most every tenth of a millisecond.
void BM_ClockYieldLoop(benchmark::State& state) {
    LiveSources sources;
    platform::x11::RealClock clock;
    BenchEngine bench([&clock] { clock.yield(); });
    bench.load(countingLoop(static_cast<int32_t>(state.range(0))));
    const int64_t perRun = statementsRun(bench.engine);
    for (auto _ : state) bench.engine.Execute();
    reportStatements(state, perRun);
    state.counters["timer_ticks"] = static_cast<double>(sources.ticks);
}
BENCHMARK(BM_ClockYieldLoop)->Arg(100000)->Unit(benchmark::kMillisecond);

// The yield alone, one processEvents call.
void BM_ProcessEvents(benchmark::State& state) {
    LiveSources sources;
    for (auto _ : state) QCoreApplication::processEvents();
    state.SetLabel(QCoreApplication::eventDispatcher()->metaObject()->className());
}
BENCHMARK(BM_ProcessEvents);

}  // namespace
}  // namespace tarvoke::bench
