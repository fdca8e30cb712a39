// libFuzzer target of the script loader: any text must check, load, dump and
// run a bounded number of statements on the dry-run roles without a fault. Host
// commands are left out (no dispatch): in a dry run they read and write
// picture files, which a fuzzer must not do with paths of its making.

#include <cstddef>
#include <cstdint>
#include <string>

#include <algorithm>

#include "engine/check.h"
#include "engine/sc.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/dryrun/dryrun.h"

namespace {

using namespace tarvoke;

// Enough statements to go round loops and recursion a few hundred times.
constexpr int64_t kStatementBudget = 5000;
// Texts stay small so that a loop of Multiply costs time, not gigabytes.
constexpr size_t kMaxTextBytes = 1 << 16;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    host::Session session;
    int64_t statements = 0;
    engine::SC* running = nullptr;
    platform::dryrun::DryRunPlatform platform([](std::string_view) {}, [&] {
        if (++statements >= kStatementBudget && running) running->stopExecution();
    });
    session.platform = platform.platform();
    host::HostCommands commands(session);
    engine::SC engine(commands);
    engine.setMaxTextBytes(kMaxTextBytes);

    std::string text(reinterpret_cast<const char*>(data), size);
    // The checker reads any text too, and points inside it, in file order.
    const int lines = 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));
    int lastLine = 1;
    for (const engine::Finding& finding : engine::checkScript(text)) {
        if (finding.line < lastLine || finding.line > lines || finding.column < 1) __builtin_trap();
        lastLine = finding.line;
    }
    engine.initialize(text);
    const std::string loaded = engine.getDebug();
    if (loaded.empty()) __builtin_trap();

    running = &engine;
    engine.execute();
    running = nullptr;
    engine.getDebug();
    return 0;
}
