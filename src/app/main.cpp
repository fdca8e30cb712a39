// tarvoke: the desktop program, with Basic Mode and Advanced Mode.

#include <QApplication>
#include <QTimer>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>
#include <unistd.h>

#include "app/app.h"
#include "app/splashwindow.h"
#include "app/manifest.h"
#include "app/priority.h"
#include "app/scriptmessages.h"
#include "platform/qimage/qimagepictures.h"
#include "platform/loop/qtloop.h"
#include "platform/x11/x11platform.h"
#include "playback/hotkeys.h"

namespace {

using namespace tarvoke;

bool inWaylandSession() {
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    return wayland && *wayland;
}

platform::x11::X11Platform* g_desktop = nullptr;

// Keys and buttons that a stopped run left down are let go first.
[[noreturn]] void endProcessNow(int status) {
    if (g_desktop) g_desktop->input().releaseAll();
    std::fflush(nullptr);
    ::_exit(status);
}

constexpr int kInternalErrorStatus = 70;

// An exception that escapes, also one that cannot unwind through Qt's
// frames, ends the program with one line, the keys let go first.
[[noreturn]] void endOnError(const char* what) {
    std::fprintf(stderr, "tarvoke: internal error%s%s\n", what ? ": " : "", what ? what : "");
    endProcessNow(kInternalErrorStatus);
}

[[noreturn]] void endOnUncaught() {
    try {
        if (const std::exception_ptr error = std::current_exception()) std::rethrow_exception(error);
    } catch (const std::exception& error) {
        endOnError(error.what());
    } catch (...) {
    }
    endOnError(nullptr);
}

int run(int argc, char** argv);

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::string_view(argv[1]) == "--version") {
        std::printf("tarvoke %s\n", TARVOKE_VERSION);
        return 0;
    }
    std::set_terminate(endOnUncaught);
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        endOnError(error.what());
    } catch (...) {
        endOnError(nullptr);
    }
}

namespace {

int run(int argc, char** argv) {
    // The program acts on X11 windows, so in a Wayland session its own
    // windows live on XWayland too.
    const bool wayland = inWaylandSession();
    if (wayland && !std::getenv("QT_QPA_PLATFORM")) ::setenv("QT_QPA_PLATFORM", "xcb", 1);

    QApplication application(argc, argv);
    // Windows go out of view while a script runs; only Exit ends the program.
    QApplication::setQuitOnLastWindowClosed(false);

    const std::filesystem::path programFolder = QCoreApplication::applicationDirPath().toStdString();
    app::QtDialogs dialogs;
    app::ScriptMessageBoxes scriptMessages;
    platform::QtLoop loop;
    const auto desktop = platform::x11::X11Platform::open(loop);
    if (!desktop) {
        std::fprintf(stderr, "tarvoke: cannot open the X display '%s'\n", std::getenv("DISPLAY") ? std::getenv("DISPLAY") : "");
        return 2;
    }
    g_desktop = desktop.get();
    // Goes before the desktop: an error on its way out lets go of the keys.
    struct ForgetDesktop {
        ~ForgetDesktop() {
            if (g_desktop) g_desktop->input().releaseAll();
            g_desktop = nullptr;
        }
    } forgetDesktop;
    platform::qimage::QImagePictures pictures;
    platform::Platform platform = desktop->platform(&scriptMessages);
    platform.pictures = &pictures;

    app::App app({programFolder, app::settingsFolder(programFolder) / "settings.dat", platform, &dialogs,
                  endProcessNow, nullptr});

    // A long step (a huge text, the dump) gives up when Ctrl+0 is held, so
    // that the stop the hotkey poll then sees ends the run at once.
    // The key state learns of it from events that a turn of the loop reads:
    // a long step reads them itself, at most once a millisecond.
    app.session.stopRequested = [&app, &desktop, last = std::chrono::steady_clock::time_point()]() mutable {
        const auto now = std::chrono::steady_clock::now();
        if (now - last < std::chrono::milliseconds(1)) return false;
        last = now;
        desktop->connection().drainEvents();
        if (!playback::stopKeysDown(desktop->keys())) return false;
        app.session.stopKeysSeen = true;
        return true;
    };

    // What the splash does before it loads, then as it loads.
    app::writeManifest();
    app::raiseProcessPriority();
    app.session.scriptFolder = programFolder.string();
    app::SplashWindow& splash = app.splashWindow();
    app.loadSettings();
    QGuiApplication::setApplicationDisplayName(QString());
    splash.show();
    splash.start();
    if (wayland)
        QTimer::singleShot(0, [&dialogs] {
            dialogs.tell("Tarvoke", "Tarvoke acts on X11 windows only: in this Wayland session it can record, "
                                    "play and look at the windows of X11 programs (XWayland) but not the others.",
                         app::Dialogs::Icon::Information);
        });
    return application.exec();
}

}  // namespace
