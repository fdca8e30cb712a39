// tarvoke-play: runs a script from the command line, headless, in CI jobs
// and over ssh.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <variant>

#include "desktop.h"
#include "engine/check.h"
#include "engine/sc.h"
#include "headless.h"
#include "host/dispatch.h"
#include "host/explainer.h"
#include "host/session.h"
#include "options.h"
#include "picturemodule.h"
#include "runplatform.h"
#include "platform/fileread.h"
#include "platform/loop/pollloop.h"
#include "playback/compiledscript.h"
#include "playback/playback.h"
#include "programfolder.h"
#include "screen/imagefiles.h"
#include "record.h"
#include "runstops.h"
#include "signals.h"
#include "guarded.h"

namespace {

using namespace tarvoke;

constexpr int kUsageStatus = 2;

// A run ended by a signal exits as a shell reports it: 128 and the signal's number.

int fail(const std::string& message) {
    std::fprintf(stderr, "tarvoke-play: %s\n", message.c_str());
    return kUsageStatus;
}

// The script's text, or an error message.
std::variant<std::string, std::string> readScript(const std::string& file) {
    platform::ReadLimits limits;
    limits.maxBytes = platform::kMaxScriptBytes;
    platform::ReadResult read = file == "-" ? platform::readStandardInput(limits) : platform::readRegularFile(file, limits);
    if (read) return std::variant<std::string, std::string>(std::in_place_index<0>, std::move(read.bytes));
    const std::string name = file == "-" ? std::string("standard input") : "'" + file + "'";
    const std::string reason = read.outcome == platform::ReadOutcome::TooLarge
                                   ? "it is larger than " + std::to_string(platform::kMaxScriptBytes >> 20) + " MB"
                                   : read.reason();
    return std::variant<std::string, std::string>(std::in_place_index<1>, "cannot read " + name + ": " + reason);
}

// The folder scripts find their pictures in: the script's own, with a
// trailing "/"; the current folder for standard input.
std::string scriptFolder(const std::string& file) {
    std::error_code error;
    std::filesystem::path folder = file == "-" ? std::filesystem::current_path(error)
                                               : std::filesystem::absolute(file, error).parent_path();
    std::string text = folder.string();
    if (text.empty() || text.back() != '/') text += '/';
    return text;
}

// One line per finding, as compilers write them, so that editors and CI jump
// there; exit 1 when there is one.
int checkScript(const std::string& file, const std::string& text) {
    player::PictureModule pictures;
    const std::string folder = scriptFolder(file);
    const engine::PictureSize pictureSize = [&](const std::string& path) -> std::optional<std::pair<int, int>> {
        platform::PixelGrid picture;
        if (!pictures.load(screen::loadPath(folder, path), picture)) return std::nullopt;
        return std::pair{picture.width, picture.height};
    };
    const std::vector<engine::Finding> findings = engine::checkScript(text, pictureSize);
    const std::string name = file == "-" ? std::string("-") : file;
    for (const engine::Finding& finding : findings)
        std::printf("%s:%d:%d: %s\n", name.c_str(), finding.line, finding.column, finding.message.c_str());
    std::fflush(stdout);
    return findings.empty() ? 0 : 1;
}

// For the last resort of std::terminate, which runs no destructor.
}  // namespace

int play(int argc, char** argv) {
    const auto parsed = player::parseOptions(std::vector<std::string>(argv + 1, argv + argc));
    if (std::holds_alternative<player::ShowHelp>(parsed)) {
        std::fputs(player::kUsage, stdout);
        return 0;
    }
    if (std::holds_alternative<player::ShowVersion>(parsed)) {
        std::printf("tarvoke-play %s\n", TARVOKE_VERSION);
        return 0;
    }
    if (const auto* error = std::get_if<player::UsageError>(&parsed))
        return fail(error->message + " (see tarvoke-play --help)");
    const auto& options = std::get<player::Options>(parsed);

    std::variant<std::string, std::string> script;
    if (!options.compileTarget.empty()) {
        script = readScript(options.file);
        if (script.index() == 1) return fail(std::get<1>(script));
        const std::string problem = playback::compileScript(player::programFolder() + "/" + playback::kRuntimeFileName,
                                                            options.compileTarget, std::get<0>(script), options.compileRepeat);
        return problem.empty() ? 0 : fail(problem);
    }
    if (options.record) {
        if (const std::string problem = player::recordingProblem(options); !problem.empty()) return fail(problem);
    } else {
        script = readScript(options.file);
        if (script.index() == 1) return fail(std::get<1>(script));
    }

    if (options.check) return checkScript(options.file, std::get<0>(script));

    std::unique_ptr<player::Headless> headless;
    if (options.headless) {
        std::string problem;
        headless = player::Headless::start({options.headless->first, options.headless->second, options.windowManager}, problem);
        if (!headless) return fail(problem);
    }

    // The desktop is needed to act and to record; a dry run and a load need none.
    const bool onDesktop = options.record || (!options.dryRun && !options.loadOnly);
    if (onDesktop) {
        if (const std::string problem = player::desktopProblem(); !problem.empty()) return fail(problem);
        if (const std::string notice = player::waylandNotice(); !notice.empty())
            std::fprintf(stderr, "tarvoke-play: %s\n", notice.c_str());
    }
    // The player shows no widget, so it runs on a loop of its own rather
    // than Qt's, and starts without loading Qt at all.
    platform::PollLoop loop;
    std::unique_ptr<player::Desktop> desktop;
    if (onDesktop && !(desktop = player::Desktop::open(loop)))
        return fail(std::string("cannot open the display '") + std::getenv("DISPLAY") + "'");

    host::Session session;
    player::PictureModule pictures;
    // Picture files are really read in a dry run too, and written only with --write-pictures.
    player::RunPlatform runPlatform(loop, desktop.get(), pictures, options.writePictures);
    if (!options.screenImage.empty()) {
        platform::PixelGrid picture;
        if (!pictures.load(options.screenImage, picture))
            return fail("cannot read the picture '" + options.screenImage + "' given to --screen-image");
        runPlatform.dryRun().screen().setPicture(std::move(picture));
    }
    if (options.screen && options.screenImage.empty())
        runPlatform.dryRun().screen().setSize({options.screen->first, options.screen->second});
    session.platform = runPlatform.platform();
    session.scriptFolder = scriptFolder(options.file);
    session.ignorePauses = options.ignorePauses;
    if (options.percent) session.fixedPauseFactor = session.pauseFactor = *options.percent / 100.0;
    // Its pictures are written in a dry run too: they are what was asked for.
    std::unique_ptr<host::Explainer> explainer;
    if (!options.explain.empty()) {
        std::error_code error, notThere;
        std::filesystem::create_directories(options.explain, error);
        if (!std::filesystem::is_directory(options.explain, notThere))
            return fail("cannot make the folder '" + options.explain + "' for --explain: " +
                        (error ? error.message() : "it is no folder"));
        explainer = std::make_unique<host::Explainer>(options.explain, pictures, player::printLine);
        session.explainer = explainer.get();
    }

    int status = 0;
    if (options.record) {
        player::CommandLineRecorder recorder(options, session, loop);
        player::StopSignals stopSignals(loop, [&](int number) {
            status = player::signalStatus(number);
            recorder.stop();
        });
        // The hotkeys are looked at after each key the recorder takes in:
        // nothing wakes while the user does nothing.
        const auto stopOnCtrlZero = [&] { desktop->pollHotkeysOnce([&] { recorder.stop(); }); };
        return recorder.run(stopOnCtrlZero) ? status : 1;
    }

    host::HostCommands commands(session);
    engine::SC engine(commands);
    engine.setMaxTextMemory(static_cast<size_t>(options.maxTextMemory));
    playback::Playback playback(engine, session);

    player::RunStops stops(loop, desktop.get(), session, playback);
    playback.load(std::move(std::get<0>(script)));
    if (!options.loadOnly) playback.run(options.repeat);
    status = stops.status();
    if (desktop) desktop->releaseAll();
    // Also after a failed or stopped run: it shows where the run ended.
    if (desktop && !options.screenshot.empty())
        if (const std::string problem = player::writeScreenshot(*desktop->platform().screen, options.screenshot); !problem.empty())
            std::fprintf(stderr, "tarvoke-play: %s\n", problem.c_str());
    if (options.dump) {
        // The dump of a stopped run is still printed; a stop during the dump ends it.
        session.stopRequested = [before = player::StopSignals::count()] { return player::StopSignals::count() != before; };
        if (!engine.writeDebug([](std::string_view piece) { std::fwrite(piece.data(), 1, piece.size(), stdout); }))
            status = player::signalStatus(player::StopSignals::last());
    }
    std::fflush(stdout);
    return status;
}

int main(int argc, char** argv) {
    return player::runGuarded("tarvoke-play", [&] { return play(argc, argv); });
}
