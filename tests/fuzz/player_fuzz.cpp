// libFuzzer target of the whole dry-run player: any text loads and runs with
// the host commands on the dry-run platform, as `tarvoke-play --dry-run`
// runs it, within a budget of statements, time and text memory per input.
// Pictures are read only from regular files and a dry run writes none, so
// paths of the fuzzer's making are harmless.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "engine/sc.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/dryrun/dryrun.h"
#include "platform/fileread.h"
#include "platform/pictures.h"

namespace {

using namespace tarvoke;

constexpr int64_t kStatementBudget = 20000;
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

    std::string text(reinterpret_cast<const char*>(data), size);
    engine.initialize(text);
    running = &engine;
    engine.execute();
    running = nullptr;
    engine.writeDebug([](std::string_view) {});
    return 0;
}
