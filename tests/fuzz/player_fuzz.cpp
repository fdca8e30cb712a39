// libFuzzer target of the whole dry-run player: any text checks, loads, dumps
// and runs with the host commands on the dry-run platform, as
// `tarvoke-play --dry-run` runs it, within a budget of statements, time and
// text memory per input. Built a second time as the loader's target
// (TARVOKE_LOADER_FUZZ) with small budgets, so that the checker and the loader
// see many inputs a second: texts stay small, and a loop of Multiply costs
// time, not gigabytes.
// Pictures are read only from regular files and a dry run writes none, so
// paths of the fuzzer's making are harmless.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "engine/check.h"
#include "engine/sc.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/dryrun/dryrun.h"
#include "platform/fileread.h"
#include "platform/pictures.h"

namespace {

using namespace tarvoke;

#ifdef TARVOKE_LOADER_FUZZ
// Enough statements to go round loops and recursion a few hundred times.
constexpr int64_t kStatementBudget = 5000;
#else
constexpr int64_t kStatementBudget = 20000;
#endif
constexpr auto kTimeBudget = std::chrono::seconds(2);
constexpr size_t kTextMemory = size_t{64} << 20;

// Reads as the player does (regular files only) and decodes nothing: a
// picture file is read and then taken as no picture.
class RegularFilePictures : public platform::Pictures {
public:
    bool load(const std::string& path, platform::PixelGrid& grid) override {
        grid = {};
        platform::readRegularFile(path, platform::ReadLimits{1 << 20, {}});
        return false;
    }
    bool save(const std::string&, const platform::PixelGrid&) override { __builtin_trap(); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto deadline = std::chrono::steady_clock::now() + kTimeBudget;
    host::Session session;
    int64_t statements = 0;
    engine::SC* running = nullptr;
    const auto overBudget = [&] { return statements >= kStatementBudget || std::chrono::steady_clock::now() > deadline; };
    platform::dryrun::DryRunPlatform platform([](std::string_view) {}, [&] {
        ++statements;
        if (running && overBudget()) running->stopExecution();
    });
    RegularFilePictures files;
    platform.setPictureFiles(&files, false);
    session.platform = platform.platform();
    session.scriptFolder = "/nonexistent/";
    // Long steps (searches, huge texts) give up when the budget is spent.
    session.stopRequested = overBudget;
    host::HostCommands commands(session);
    engine::SC engine(commands);
    engine.setMaxTextMemory(kTextMemory);
#ifdef TARVOKE_LOADER_FUZZ
    engine.setMaxTextBytes(1 << 16);
#endif

    std::string text(reinterpret_cast<const char*>(data), size);
    // The checker reads any text too, and points inside it, in file order.
    const int lines = 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));
    int lastLine = 1;
    for (const engine::Finding& finding : engine::checkScript(text)) {
        if (finding.line < lastLine || finding.line > lines || finding.column < 1) __builtin_trap();
        lastLine = finding.line;
    }
    engine.initialize(text);
    if (engine.getDebug().empty()) __builtin_trap();
    running = &engine;
    engine.execute();
    running = nullptr;
    engine.writeDebug([](std::string_view) {});
    return 0;
}
