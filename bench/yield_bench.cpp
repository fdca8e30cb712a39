// The run loop with the real yield before every statement, on both event
// loops: Qt's (the windows) and the poll loop (tools/tarvoke-play), each
// with a timer and a watched pipe live, as they are during a run.

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <functional>

#include "benchscripts.h"
#include "platform/loop/pollloop.h"
#include "platform/loop/qtloop.h"
#include "platform/x11/clock.h"

namespace tarvoke::bench {
namespace {

// The sources a run watches: the signal pipe and a timer.
class LiveSources {
public:
    explicit LiveSources(platform::EventLoop& loop) {
        if (::pipe(m_pipe) == 0) m_watch = loop.watchReadable(m_pipe[0], [] {});
        m_timer = loop.every(std::chrono::milliseconds(10), [this] { ++ticks; });
    }
    ~LiveSources() {
        m_watch.reset();
        ::close(m_pipe[0]);
        ::close(m_pipe[1]);
    }
    int64_t ticks = 0;

private:
    int m_pipe[2] = {-1, -1};
    std::unique_ptr<platform::EventLoop::Handle> m_watch;
    std::unique_ptr<platform::EventLoop::Handle> m_timer;
};

// The counting loop with yield before every statement, on a loop with
// its live sources.
void runCountingLoop(benchmark::State& state, platform::EventLoop& loop, std::function<void()> yield) {
    LiveSources sources(loop);
    BenchEngine bench(std::move(yield));
    bench.load(countingLoop(static_cast<int32_t>(state.range(0))));
    const int64_t perRun = statementsRun(bench.engine);
    for (auto _ : state) bench.engine.execute();
    reportStatements(state, perRun);
    state.counters["timer_ticks"] = static_cast<double>(sources.ticks);
}

// A turn of the loop before every statement.
template <typename Loop>
void BM_TurnEveryStatement(benchmark::State& state) {
    Loop loop;
    runCountingLoop(state, loop, [&loop] { loop.turn(false); });
}
BENCHMARK_TEMPLATE(BM_TurnEveryStatement, platform::QtLoop)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_TurnEveryStatement, platform::PollLoop)->Arg(100000)->Unit(benchmark::kMillisecond);

// The real clock's yield, which gives the loop a turn at most every tenth
// of a millisecond.
template <typename Loop>
void BM_ClockYieldLoop(benchmark::State& state) {
    Loop loop;
    platform::x11::RealClock clock(loop);
    runCountingLoop(state, loop, [&clock] { clock.yield(); });
}
BENCHMARK_TEMPLATE(BM_ClockYieldLoop, platform::QtLoop)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_ClockYieldLoop, platform::PollLoop)->Arg(100000)->Unit(benchmark::kMillisecond);

// One turn alone.
template <typename Loop>
void BM_Turn(benchmark::State& state) {
    Loop loop;
    LiveSources sources(loop);
    for (auto _ : state) loop.turn(false);
}
BENCHMARK_TEMPLATE(BM_Turn, platform::QtLoop);
BENCHMARK_TEMPLATE(BM_Turn, platform::PollLoop);

}  // namespace
}  // namespace tarvoke::bench
