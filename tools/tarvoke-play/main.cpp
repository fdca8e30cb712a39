// tarvoke-play: runs a script from the command line, headless, in CI jobs
// and over ssh.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <variant>

#include "desktop.h"
#include "engine/sc.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "options.h"
#include "picturemodule.h"
#include "platform/dryrun/dryrun.h"
#include "platform/loop/pollloop.h"
#include "platform/turnpacer.h"
#include "playback/playback.h"
#include "record.h"
#include "signals.h"

namespace {

using namespace tarvoke;

constexpr int kUsageStatus = 2;

int fail(const std::string& message) {
    std::fprintf(stderr, "tarvoke-play: %s\n", message.c_str());
    return kUsageStatus;
}

// The script's text, or an error message.
std::variant<std::string, std::string> readScript(const std::string& file) {
    if (file == "-") {
        std::ostringstream text;
        text << std::cin.rdbuf();
        return std::variant<std::string, std::string>(std::in_place_index<0>, text.str());
    }
    std::error_code error;
    if (std::filesystem::is_directory(file, error))
        return std::variant<std::string, std::string>(std::in_place_index<1>, "cannot read '" + file + "': it is a folder");
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return std::variant<std::string, std::string>(std::in_place_index<1>,
                                                      "cannot read '" + file + "': " + std::strerror(errno));
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return std::variant<std::string, std::string>(std::in_place_index<0>, std::move(text));
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

void printLine(std::string_view line) {
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
}

}  // namespace

int main(int argc, char** argv) {
    const auto parsed = player::parseOptions(std::vector<std::string>(argv + 1, argv + argc));
    if (std::holds_alternative<player::ShowHelp>(parsed)) {
        std::fputs(player::kUsage, stdout);
        return 0;
    }
    if (const auto* error = std::get_if<player::UsageError>(&parsed))
        return fail(error->message + " (see tarvoke-play --help)");
    const auto& options = std::get<player::Options>(parsed);

    std::variant<std::string, std::string> script;
    if (options.record) {
        if (const std::string problem = player::recordingProblem(options); !problem.empty()) return fail(problem);
    } else {
        script = readScript(options.file);
        if (script.index() == 1) return fail(std::get<1>(script));
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
    platform::TurnPacer pacer;
    platform::dryrun::DryRunPlatform dryRun(printLine, [&pacer, &loop] {
        if (pacer.turnDue()) loop.turn(false);
    });
    player::PictureModule pictures;
    dryRun.setPictureFiles(&pictures);
    if (!options.screenImage.empty()) {
        screen::PixelGrid picture;
        if (!pictures.load(options.screenImage, picture))
            return fail("cannot read the picture '" + options.screenImage + "' given to --screen-image");
        dryRun.screen().setPicture(std::move(picture));
    }
    if (options.screen && options.screenImage.empty())
        dryRun.screen().setSize({options.screen->first, options.screen->second});
    session.platform = desktop ? desktop->platform() : dryRun.platform();
    // Picture files are really read and written in a dry run too.
    if (desktop) session.platform.pictures = &pictures;
    session.sScriptFolder = scriptFolder(options.file);
    session.bIgnorePauses = options.ignorePauses;
    if (options.percent) session.fixedPauseFactor = session.dblPauseFactor = *options.percent / 100.0;

    int status = 0;
    if (options.record) {
        player::CommandLineRecorder recorder(options, session, loop);
        player::StopSignals stopSignals(loop, [&](int number) {
            status = 128 + number;
            recorder.stop();
        });
        // The hotkeys are looked at after each key the recorder takes in:
        // nothing wakes while the user does nothing.
        const auto stopOnCtrlZero = [&] { desktop->pollHotkeysOnce([&] { recorder.stop(); }); };
        return recorder.run(stopOnCtrlZero) ? status : 1;
    }

    engine::SC engine(session);
    host::HostCommands commands;
    engine.setExternalCommands(&commands);
    playback::Playback playback(engine, session);

    // A stopped run does not wait for a message box left open.
    const auto stopRun = [&] {
        playback.stop();
        if (desktop) desktop->closeMessages();
    };
    player::StopSignals stopSignals(loop, [&](int number) {
        status = 128 + number;
        stopRun();
    });

    // Ctrl+0 stops the run with status 0.
    if (desktop) desktop->pollHotkeys(stopRun);

    playback.load(std::move(std::get<0>(script)));
    if (!options.loadOnly) playback.run(options.repeat);
    if (desktop) desktop->releaseAll();
    if (options.dump) {
        const std::string dump = engine.GetDebug();
        std::fwrite(dump.data(), 1, dump.size(), stdout);
    }
    std::fflush(stdout);
    return status;
}
