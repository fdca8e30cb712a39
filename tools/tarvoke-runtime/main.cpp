// The runtime of compiled programs. A compiled program is this file with
// its last byte replaced by the repeat flag and the script's body and the
// runtime's length behind it; it finds that tail through its own last four
// bytes and plays the body as tarvoke-play does, stopped by Ctrl+0, SIGINT
// or SIGTERM. Started with TARVOKE_RUNTIME_DRY_RUN=1 it plays the body
// against the dry run, printing what it would do.

#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

#include "desktop.h"
#include "engine/sc.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "messageboxes.h"
#include "picturemodule.h"
#include "runplatform.h"
#include "platform/loop/pollloop.h"
#include "playback/compiledscript.h"
#include "playback/playback.h"
#include "programfolder.h"
#include "runtimemodule.h"
#include "runstops.h"
#include "signals.h"
#include "guarded.h"

namespace {

using namespace tarvoke;

constexpr int kFailureStatus = 2;
// Set for the copy of the program that shows one message box.
constexpr const char* kMessageMarker = "TARVOKE_RUNTIME_MESSAGE";

int fail(const std::string& message) {
    std::fprintf(stderr, "%s: %s\n", player::programName(), message.c_str());
    return kFailureStatus;
}

bool isSet(const char* name) {
    const char* value = std::getenv(name);
    return value && *value;
}

// The module inside the program, as a file in memory that dlopen can name.
// Made once, at the first need.
std::string modulePath() {
    static int fd = -1;
    if (fd < 0) {
        fd = ::memfd_create("tarvoke-runtime-module", MFD_CLOEXEC);
        const unsigned char* next = tarvoke_runtime_module_begin;
        while (fd >= 0 && next < tarvoke_runtime_module_end) {
            const ssize_t written = ::write(fd, next, static_cast<size_t>(tarvoke_runtime_module_end - next));
            if (written < 0 && errno == EINTR) continue;
            if (written <= 0) return "/nonexistent/tarvoke-runtime-module";
            next += written;
        }
    }
    return fd < 0 ? std::string("/nonexistent/tarvoke-runtime-module") : "/proc/self/fd/" + std::to_string(fd);
}

// The copy of the program that shows one box: flags in argv[1], the title,
// a NUL byte and the text on standard input, as tarvoke-message takes them.
int showMessage(int argc, char** argv) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (const char* parent = std::getenv("TARVOKE_MESSAGE_PARENT");
        !parent || std::strtol(parent, nullptr, 10) != static_cast<long>(::getppid()))
        return 0;
    if (argc != 2) return kFailureStatus;
    const auto flags = static_cast<uint32_t>(std::strtoul(argv[1], nullptr, 10));
    const std::string input((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
    const size_t split = input.find('\0');
    const std::string title = split == std::string::npos ? std::string() : input.substr(0, split);
    const std::string text = split == std::string::npos ? input : input.substr(split + 1);
    void* module = ::dlopen(modulePath().c_str(), RTLD_NOW | RTLD_LOCAL);
    const auto show = module ? reinterpret_cast<runtime::ShowMessage>(::dlsym(module, runtime::kShowMessageSymbol)) : nullptr;
    if (!show) return fail(std::string("cannot show a message box: ") + ::dlerror());
    show(argc, argv, flags, title.c_str(), text.c_str());
    return 0;
}

int run() {
    const std::string self = player::programPath();
    auto tail = playback::readCompiledTail(self);
    if (!tail) return fail("this file holds no compiled script");

    const bool dryRunOnly = isSet("TARVOKE_RUNTIME_DRY_RUN");
    if (!dryRunOnly && !isSet("DISPLAY")) return fail("no display: DISPLAY is not set");
    platform::PollLoop loop;
    std::unique_ptr<player::Desktop> desktop;
    if (!dryRunOnly) {
        const std::string marker = std::string(kMessageMarker) + "=1";
        if (!(desktop = player::Desktop::open(loop, self, marker)))
            return fail(std::string("cannot open the display '") + std::getenv("DISPLAY") + "'");
    }

    host::Session session;
    player::PictureModule pictures(modulePath);
    player::RunPlatform runPlatform(loop, desktop.get(), pictures, false);
    session.platform = runPlatform.platform();
    // The program's own folder holds its pictures.
    session.scriptFolder = player::programFolder() + "/";

    host::HostCommands commands(session);
    engine::SC engine(commands);
    playback::Playback playback(engine, session);
    player::RunStops stops(loop, desktop.get(), session, playback);

    // Compiling settled blanks and case outside the quotes and dropped the
    // quotes: what is left is loaded as it stands.
    playback.load(std::move(tail->body), engine::SourceForm::Compact);
    if (tail->flag == playback::kRepeatFlag) {
        // Over and over on one load, as Repeat plays; a turn of the loop
        // between runs lets Ctrl+0 in even when the body never yields.
        for (;;) {
            playback.run();
            if (playback.stopRequested() || player::StopSignals::count() != 0) break;
            loop.turn(false);
            if (playback.stopRequested()) break;
        }
    } else {
        playback.run();
    }
    const int status = stops.status();
    if (desktop) desktop->releaseAll();
    std::fflush(stdout);
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    if (isSet(kMessageMarker)) return showMessage(argc, argv);
    return player::runGuarded(tarvoke::player::programName(), [&] { return run(); });
}
