// The run loop without the yield: what the engine itself costs per statement.

#include <benchmark/benchmark.h>

#include "benchscripts.h"

namespace tarvoke::bench {
namespace {

void BM_ArithmeticLoop(benchmark::State& state) {
    const auto passes = static_cast<int32_t>(state.range(0));
    BenchEngine bench;
    bench.load(countingLoop(passes));
    for (auto _ : state) bench.engine.execute();
    reportStatements(state, statementsRun(bench.engine));
}
BENCHMARK(BM_ArithmeticLoop)->Arg(100000)->Unit(benchmark::kMillisecond);

// The mix a counting loop with a condition inside runs: int, double and text
// arithmetic, an If that is false and an If that is true.
void BM_MixedLoop(benchmark::State& state) {
    const int32_t passes = 100000;
    BenchEngine bench;
    bench.load("Function(Main); Int(i, 0); Double(d, 0.5); String(s, x);"
               "While(i < " + std::to_string(passes) + ");"
               "  Add(i, 1); Multiply(d, 1.0001); Subtract(d, 0.25);"
               "  If(i = 7); Set(s, seven); EndIf();"
               "  If(d >= 0); Divide(d, 2); Else(); Add(d, 1); EndIf();"
               "EndWhile(); EndFunction();");
    for (auto _ : state) bench.engine.execute();
    reportStatements(state, statementsRun(bench.engine));
}
BENCHMARK(BM_MixedLoop)->Unit(benchmark::kMillisecond);

// An If whose condition is false skips a body of `range` statements: the
// skip takes the line found at load, so the time does not grow with the body.
void BM_IfSkip(benchmark::State& state) {
    const int32_t passes = 10000;
    std::string script = "Function(Main); Int(i, 0); While(i < " + std::to_string(passes) + "); Add(i, 1); If(i < 0);";
    for (int64_t k = 0; k < state.range(0); ++k) script += "Add(i, 1);";
    script += "EndIf(); EndWhile(); EndFunction();";
    BenchEngine bench;
    bench.load(script);
    for (auto _ : state) bench.engine.execute();
    reportStatements(state, statementsRun(bench.engine));
}
BENCHMARK(BM_IfSkip)->Arg(1)->Arg(100)->Arg(10000)->Unit(benchmark::kMillisecond);

// A While that is false at once, skipping `range` statements each time.
void BM_WhileSkip(benchmark::State& state) {
    const int32_t passes = 10000;
    std::string script = "Function(Main); Int(i, 0); While(i < " + std::to_string(passes) + "); Add(i, 1); While(i < 0);";
    for (int64_t k = 0; k < state.range(0); ++k) script += "Add(i, 1);";
    script += "EndWhile(); EndWhile(); EndFunction();";
    BenchEngine bench;
    bench.load(script);
    for (auto _ : state) bench.engine.execute();
    reportStatements(state, statementsRun(bench.engine));
}
BENCHMARK(BM_WhileSkip)->Arg(1)->Arg(100)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tarvoke::bench
