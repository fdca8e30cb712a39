// Load: SC::Initialize on recordings of 1, 4 and 10 MB; the time should grow
// linearly with the size. The checker on the 10 MB one, beside it.

#include <benchmark/benchmark.h>

#include "benchscripts.h"
#include "engine/check.h"

namespace tarvoke::bench {
namespace {

void BM_LoadRecording(benchmark::State& state) {
    const std::string script = recordedScript(static_cast<size_t>(state.range(0)) << 20);
    BenchEngine bench;
    for (auto _ : state) {
        state.PauseTiming();
        std::string text = script;
        state.ResumeTiming();
        bench.engine.initialize(text);
        benchmark::DoNotOptimize(bench.engine.statementCount());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(script.size()));
    state.counters["statements"] = bench.engine.statementCount();
}
BENCHMARK(BM_LoadRecording)->Arg(1)->Arg(4)->Arg(10)->Unit(benchmark::kMillisecond);

void BM_CheckRecording(benchmark::State& state) {
    const std::string script = recordedScript(static_cast<size_t>(state.range(0)) << 20);
    for (auto _ : state) benchmark::DoNotOptimize(engine::checkScript(script).size());
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(script.size()));
}
BENCHMARK(BM_CheckRecording)->Arg(10)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tarvoke::bench
