#include "platform/x11/programs.h"

#include <X11/Xlib.h>
#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>

namespace tarvoke::platform::x11 {
namespace {

constexpr int kShowMinimized = 2;
constexpr int kShowMaximized = 3;
constexpr int kStateWatchMs = 5000;
constexpr int kStatePollMs = 50;
constexpr int kStateAskAgainMs = 500;

bool isExecutableFile(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

// Inside double quotes a backslash escapes only these.
bool escapableInDoubleQuotes(char c) { return c == '"' || c == '\\' || c == '$' || c == '`'; }

}  // namespace

std::vector<std::string> splitWords(const std::string& text) {
    std::vector<std::string> words;
    std::string word;
    bool inWord = false;
    char quote = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote == '\'') {
            if (c == '\'') quote = 0;
            else word += c;
        } else if (quote == '"') {
            if (c == '"') quote = 0;
            else if (c == '\\' && i + 1 < text.size() && escapableInDoubleQuotes(text[i + 1]))
                word += text[++i];
            else word += c;
        } else if (c == ' ' || c == '\t' || c == '\n') {
            if (inWord) words.push_back(word);
            word.clear();
            inWord = false;
        } else {
            inWord = true;
            if (c == '\'' || c == '"') quote = c;
            else if (c == '\\' && i + 1 < text.size()) word += text[++i];
            else word += c;
        }
    }
    if (inWord) words.push_back(word);
    return words;
}

std::string findExecutable(const std::string& file) {
    if (file.empty()) return {};
    if (file.find('/') != std::string::npos) return isExecutableFile(file) ? file : std::string();
    const char* path = std::getenv("PATH");
    std::string folders = path ? path : "/usr/local/bin:/usr/bin:/bin";
    size_t start = 0;
    while (start <= folders.size()) {
        size_t end = folders.find(':', start);
        if (end == std::string::npos) end = folders.size();
        // An empty entry is the current folder.
        std::string candidate = end > start ? folders.substr(start, end - start) : std::string(1, '.');
        candidate.append(1, '/').append(file);
        if (isExecutableFile(candidate)) return candidate;
        start = end + 1;
    }
    return {};
}

long spawnDetached(const std::vector<std::string>& argv) {
    // Everything the children use is made before fork: after it only
    // async-signal-safe calls are allowed.
    std::vector<char*> args;
    for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    int channel[2];
    if (::pipe2(channel, O_CLOEXEC) != 0) return -1;
    const pid_t middle = ::fork();
    if (middle < 0) {
        ::close(channel[0]);
        ::close(channel[1]);
        return -1;
    }
    if (middle == 0) {
        // The middle child starts the program and ends at once, so the
        // program is handed to init and never becomes our zombie.
        ::setsid();
        const pid_t program = ::fork();
        if (program == 0) {
            // Detached also from our output: a program that outlives the
            // run must not hold a pipe that someone reads to its end.
            const int null = ::open("/dev/null", O_RDWR);
            if (null >= 0) {
                ::dup2(null, 0);
                ::dup2(null, 1);
                ::dup2(null, 2);
            }
            ::execv(args[0], args.data());
            ::_exit(127);
        }
        const long pid = program;
        [[maybe_unused]] const ssize_t written = ::write(channel[1], &pid, sizeof pid);
        ::_exit(0);
    }
    ::close(channel[1]);
    long pid = -1;
    if (::read(channel[0], &pid, sizeof pid) != static_cast<ssize_t>(sizeof pid)) pid = -1;
    ::close(channel[0]);
    int status = 0;
    while (::waitpid(middle, &status, 0) < 0 && errno == EINTR) {
    }
    return pid;
}

void X11Programs::shellExecute(const std::string&, const std::string& file, const std::string& parameters,
                               int32_t show) {
    if (file.empty()) return;
    std::vector<std::string> argv;
    if (std::string program = findExecutable(file); !program.empty()) {
        argv.push_back(program);
        for (std::string& word : splitWords(parameters)) argv.push_back(std::move(word));
    } else {
        const std::string opener = findExecutable("xdg-open");
        if (opener.empty()) return;
        argv = {opener, file};
    }
    const bool watched = show == kShowMinimized || show == kShowMaximized;
    // Taken before the start, so that none of the new program's windows is among them.
    KnownWindows known;
    if (watched) known = knownWindows();
    const long pid = spawnDetached(argv);
    if (pid > 0 && watched) applyStateLater({pid, show, std::chrono::steady_clock::now(), std::move(known), None, {}});
}

X11Programs::X11Programs(X11Windows& windows, EventLoop& loop) : m_windows(windows), m_loop(loop) {}

X11Programs::~X11Programs() = default;

// A window number freed by a program that has gone is given to the next
// window made, maybe the new program's own: a known window is the same one
// only while its frame (its parent) is.
Window X11Programs::frameOf(Window window) {
    Connection& x = m_windows.connection();
    Window root = 0, parent = 0;
    Window* children = nullptr;
    unsigned count = 0;
    if (!x.checked([&] { XQueryTree(x.display(), window, &root, &parent, &children, &count); })) return None;
    if (children) XFree(children);
    return parent;
}

X11Programs::KnownWindows X11Programs::knownWindows() {
    KnownWindows known;
    for (Window window : m_windows.clientWindows())
        if (const Window frame = frameOf(window); frame != None) known[window] = frame;
    return known;
}

void X11Programs::applyStateLater(Watch watch) {
    const uint64_t id = m_nextWatch++;
    // The watch ends itself from its tick: nothing may follow the erase.
    m_watches[id] = m_loop.every(std::chrono::milliseconds(kStatePollMs), [this, id, watch = std::move(watch)]() mutable {
        if (lookFor(watch)) m_watches.erase(id);
    });
}

Window X11Programs::findWindowOf(const Watch& watch) {
    // The program's own window, else the first new one without a process
    // id (xcalc, xedit and other plain Xt programs publish none).
    Window unclaimed = None;
    for (Window window : m_windows.clientWindows()) {
        const unsigned long owner = m_windows.processOf(window);
        if (owner == static_cast<unsigned long>(watch.pid)) return window;
        if (owner == 0 && unclaimed == None) {
            const auto before = watch.known.find(window);
            if (before == watch.known.end() || frameOf(window) != before->second) unclaimed = window;
        }
    }
    return unclaimed;
}

// A window manager may pass over a request that comes while it is still
// taking the window in: the request is made again until the window shows
// the state.
bool X11Programs::lookFor(Watch& watch) {
    const auto now = std::chrono::steady_clock::now();
    if (watch.window == None) watch.window = findWindowOf(watch);
    if (watch.window != None) {
        if (watch.asked != std::chrono::steady_clock::time_point{} && stateShown(watch.window, watch.show)) return true;
        if (now - watch.asked >= std::chrono::milliseconds(kStateAskAgainMs)) {
            applyState(watch.window, watch.show);
            watch.asked = now;
        }
    }
    return now - watch.started > std::chrono::milliseconds(kStateWatchMs);
}

bool X11Programs::stateShown(Window window, int32_t show) {
    Connection& x = m_windows.connection();
    if (show == kShowMinimized) {
        const auto state = x.cardinals(window, x.atom("WM_STATE"), x.atom("WM_STATE"));
        if (state && !state->empty() && state->front() == IconicState) return true;
    }
    const auto state = x.cardinals(window, x.atom("_NET_WM_STATE"), XA_ATOM);
    if (!state) return false;
    const Atom wanted = x.atom(show == kShowMinimized ? "_NET_WM_STATE_HIDDEN" : "_NET_WM_STATE_MAXIMIZED_VERT");
    return std::find(state->begin(), state->end(), wanted) != state->end();
}

void X11Programs::applyState(unsigned long window, int32_t show) {
    Connection& x = m_windows.connection();
    if (show == kShowMinimized) {
        XIconifyWindow(x.display(), window, DefaultScreen(x.display()));
    } else {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = x.atom("_NET_WM_STATE");
        event.xclient.format = 32;
        event.xclient.data.l[0] = 1;  // add
        event.xclient.data.l[1] = static_cast<long>(x.atom("_NET_WM_STATE_MAXIMIZED_VERT"));
        event.xclient.data.l[2] = static_cast<long>(x.atom("_NET_WM_STATE_MAXIMIZED_HORZ"));
        event.xclient.data.l[3] = 1;  // from an application
        XSendEvent(x.display(), x.root(), False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
    }
    x.flush();
}

}  // namespace tarvoke::platform::x11
