#include "benchscripts.h"

namespace tarvoke::bench {

std::string recordedScript(size_t bytes) {
    std::string text = "Function(Main);\n";
    text.reserve(bytes + 256);
    // A varied pattern so that numbers have different lengths, as recordings do.
    for (uint32_t i = 0; text.size() < bytes; ++i) {
        const uint32_t x = (i * 37) % 1920, y = (i * 53) % 1080, key = 65 + i % 26;
        text += "Pause(" + std::to_string(16 + i % 300) + ");\n";
        text += "MoveMouse(" + std::to_string(x) + "," + std::to_string(y) + ");\n";
        if (i % 4 == 0) text += "LeftDown();\nPause(80);\nLeftUp();\n";
        if (i % 3 == 0) text += "KeyDown(" + std::to_string(key) + ");\nPause(40);\nKeyUp(" + std::to_string(key) + ");\n";
    }
    return text + "EndFunction();\n";
}

std::string countingLoop(int32_t passes) {
    return "Function(Main);\nInt(i, 0);\nWhile(i < " + std::to_string(passes) + ");\n  Add(i, 1);\nEndWhile();\nEndFunction();\n";
}

int64_t statementsRun(engine::SC& engine) {
    int64_t count = 0;
    engine.setExecuteType(engine::ExecuteType::WhiteDebug);
    engine.setStatementCounter([&count] { ++count; });
    engine.execute();
    engine.setExecuteType(engine::ExecuteType::Play);
    engine.setStatementCounter({});
    return count;
}

void reportStatements(benchmark::State& state, int64_t perRun) {
    state.SetItemsProcessed(state.iterations() * perRun);
    state.counters["per_statement"] =
        benchmark::Counter(static_cast<double>(state.iterations() * perRun),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BenchEngine::BenchEngine(std::function<void()> pump)
    : m_platform([](std::string_view) {}, pump ? pump : std::function<void()>{}) {
    session.platform = m_platform.platform();
    if (!pump) session.platform.clock = &m_nullClock;
}

}  // namespace tarvoke::bench
