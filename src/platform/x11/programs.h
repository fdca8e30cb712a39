#pragma once
// Starting programs and documents: an executable path or a name found on
// PATH is spawned directly, anything else is handed to xdg-open. Children
// are detached (their own session) and reaped at once, so none is left
// behind as a zombie and none dies with the run.

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/eventloop.h"
#include "platform/programs.h"
#include "platform/x11/windows.h"

namespace tarvoke::platform::x11 {

// Splits a text into words as a shell would (blanks, single and double
// quotes, backslash), without running a shell: nothing is expanded.
std::vector<std::string> splitWords(const std::string& text);

// The path of an executable named by file: itself when it holds a '/', else
// the first match on PATH; empty when there is none.
std::string findExecutable(const std::string& file);

class X11Programs : public Programs {
public:
    X11Programs(X11Windows& windows, EventLoop& loop);
    ~X11Programs() override;
    void shellExecute(const std::string& verb, const std::string& file, const std::string& parameters,
                      int32_t show) override;

private:
    // For up to five seconds, the first client window of process pid (or,
    // for a program that names none, the first new window) is iconified
    // (show 2) or maximized (show 3), watched from the event loop.
    // The client windows there now, each with its frame.
    using KnownWindows = std::map<Window, Window>;
    KnownWindows knownWindows();
    Window frameOf(Window window);
    struct Watch {
        long pid;
        int32_t show;
        std::chrono::steady_clock::time_point started;
        KnownWindows known;
        Window window = None;  // once found
        std::chrono::steady_clock::time_point asked;
    };
    void applyStateLater(Watch watch);
    void applyState(unsigned long window, int32_t show);
    bool stateShown(Window window, int32_t show);

    // One look for the first client window of pid, or the first one not
    // known at the start that names no process, and at its state once
    // asked for; true when the watch is over (the window shows the state,
    // or the time is up).
    bool lookFor(Watch& watch);
    Window findWindowOf(const Watch& watch);

    X11Windows& m_windows;
    EventLoop& m_loop;
    // The timers of the watches still running, by number.
    std::map<uint64_t, std::unique_ptr<EventLoop::Handle>> m_watches;
    uint64_t m_nextWatch = 0;
};

// Spawns argv[0] (a path) detached; the process id, or -1.
long spawnDetached(const std::vector<std::string>& argv);

}  // namespace tarvoke::platform::x11
