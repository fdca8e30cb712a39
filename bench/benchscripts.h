#pragma once
// Scripts and engines shared by the benchmarks.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "engine/sc.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/dryrun/dryrun.h"

namespace tarvoke::bench {

// A recording as the recorder writes it (pauses, moves, keys and clicks in
// Function(Main)), of at least `bytes` bytes.
std::string recordedScript(size_t bytes);

// Function(Main) counting i from 0 to `passes` in a While loop of Add.
std::string countingLoop(int32_t passes);
// Runs the loaded script once, counting the statements it executes.
int64_t statementsRun(engine::SC& engine);
// Sets the items processed and the time per statement of a run benchmark.
void reportStatements(benchmark::State& state, int64_t perRun);

// A yield that does nothing, so a run measures the engine alone.
class NullClock : public platform::Clock {
public:
    void yield() override {}
    void wait(int32_t) override {}
    void cancelWaits() override {}
    int64_t monotonicMs() override { return 0; }
};

// An engine on the dry-run platform printing nowhere, its yield given by `pump`
// (the null clock when pump is empty).
class BenchEngine {
public:
    explicit BenchEngine(std::function<void()> pump = {});
    void load(std::string text) { engine.initialize(text); }

    host::Session session;

private:
    host::HostCommands m_commands{session};

public:
    engine::SC engine{m_commands};

private:
    platform::dryrun::DryRunPlatform m_platform;
    NullClock m_nullClock;
};

}  // namespace tarvoke::bench
