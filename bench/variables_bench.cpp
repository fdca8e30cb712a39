// Variable look-up as the number of variables grows: the time should stay flat.

#include <benchmark/benchmark.h>

#include "benchscripts.h"

namespace tarvoke::bench {
namespace {

// Makes `count` long variables v0, v1, ... by running Int statements.
void makeVariables(BenchEngine& bench, int64_t count) {
    std::string script = "Function(Main);";
    for (int64_t k = 0; k < count; ++k) script += "Int(v" + std::to_string(k) + ", " + std::to_string(k) + ");";
    bench.load(script + "EndFunction();");
    bench.engine.execute();
}

void BM_GetVariable(benchmark::State& state) {
    BenchEngine bench;
    makeVariables(bench, state.range(0));
    const std::string name = "v" + std::to_string(state.range(0) / 2);
    for (auto _ : state) {
        std::string copy = name;
        bench.engine.getVariable(copy);
        benchmark::DoNotOptimize(bench.engine.valueSlot().integer);
    }
}
BENCHMARK(BM_GetVariable)->Arg(10)->Arg(1000)->Arg(100000);

// A name no variable bears falls through all three tables to bare text.
void BM_GetVariableMissing(benchmark::State& state) {
    BenchEngine bench;
    makeVariables(bench, state.range(0));
    for (auto _ : state) {
        std::string copy = "nosuchname";
        bench.engine.getVariable(copy);
        benchmark::DoNotOptimize(bench.engine.valueSlot().text);
    }
}
BENCHMARK(BM_GetVariableMissing)->Arg(10)->Arg(1000)->Arg(100000);

// Add on one variable in a loop while many others exist. The first run
// makes the variables; the runs measured find them made and skip that.
void BM_LoopAmongVariables(benchmark::State& state) {
    BenchEngine bench;
    const int64_t count = state.range(0);
    std::string script = "Function(Main); If(made <> 1); Int(made, 1);";
    for (int64_t k = 0; k < count; ++k) script += "Int(v" + std::to_string(k) + ", 0);";
    const std::string middle = "v" + std::to_string(count / 2);
    script += "EndIf(); Int(i, 0); While(i < 10000); Add(i, 1); Add(" + middle + ", 1); EndWhile(); EndFunction();";
    bench.load(script);
    bench.engine.execute();
    const int64_t perRun = statementsRun(bench.engine);
    for (auto _ : state) bench.engine.execute();
    reportStatements(state, perRun);
}
BENCHMARK(BM_LoopAmongVariables)->Arg(10)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tarvoke::bench
