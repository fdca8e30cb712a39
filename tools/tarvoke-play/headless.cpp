#include "headless.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <vector>

#include "platform/x11/windowmanager.h"
#include "platform/pngwriter.h"

extern char** environ;

namespace tarvoke::player {
namespace {

// Generous: eight screens starting at once on two loaded cores take well
// under a second each.
constexpr std::chrono::milliseconds kStartLimit{30000};
// How long a helper has to end on SIGTERM before it gets SIGKILL.
constexpr int kEndGraceMs = 3000;
// What the guard hears: a process id to end if the player goes, or this.
constexpr int32_t kDone = 0;

// glibc 2.36 declares these without C linkage for C++: called directly.
int pidfdOpen(pid_t pid) { return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)); }
void pidfdSignal(int pidfd, int number) { ::syscall(SYS_pidfd_send_signal, pidfd, number, nullptr, 0); }

// File descriptors handed to a child land on 0 to 3; the originals are
// moved above them first, so that a dup2 never maps one onto itself and
// keeps it close-on-exec.
int above(int fd) {
    if (fd < 0 || fd > 9) return fd;
    const int moved = ::fcntl(fd, F_DUPFD_CLOEXEC, 10);
    ::close(fd);
    return moved;
}

// Sends SIGTERM to each process, waits until all have ended, at most the
// grace time, then sends SIGKILL to those still there.
void endProcesses(const int* pidfds, int count) {
    std::vector<pollfd> waiting;
    for (int i = 0; i < count; ++i) {
        if (pidfds[i] < 0) continue;
        pidfdSignal(pidfds[i], SIGTERM);
        waiting.push_back({pidfds[i], POLLIN, 0});
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kEndGraceMs);
    while (!waiting.empty()) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) break;
        if (::poll(waiting.data(), waiting.size(), static_cast<int>(left.count())) < 0 && errno != EINTR) break;
        std::erase_if(waiting, [](const pollfd& fd) { return fd.revents != 0; });
    }
    for (const pollfd& fd : waiting) pidfdSignal(fd.fd, SIGKILL);
}

// The guard: a forked copy of the player that ends the helpers when the
// player ends without ending them itself (SIGKILL, a crash, an exit from
// deep inside a library). It holds the other end of a socket; the player
// tells it each helper's process id, and "done" once it has ended them.
// End of file without "done" means the player is gone. The guard lives in a
// session of its own and ignores the signals a terminal or a job runner
// sends to the player's group, so it outlasts the player.
[[noreturn]] void guard(int socket) {
    ::setsid();
    for (int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) ::signal(number, SIG_IGN);
    ::dup2(socket, 3);
    const int null = ::open("/dev/null", O_RDWR);
    for (int fd = 0; fd < 3; ++fd) ::dup2(null, fd);
    ::close_range(4, ~0U, 0);

    constexpr int kMost = 8;
    int pidfds[kMost];
    int count = 0;
    for (;;) {
        int32_t pid = 0;
        const ssize_t got = ::read(3, &pid, sizeof pid);
        if (got < 0 && errno == EINTR) continue;
        if (got != sizeof pid) break;
        if (pid == kDone) ::_exit(0);
        if (count < kMost) pidfds[count++] = pidfdOpen(pid);
    }
    endProcesses(pidfds, count);
    ::_exit(0);
}

void closeFd(int& fd) {
    if (fd >= 0) ::close(fd);
    fd = -1;
}

}  // namespace

bool Headless::startGuard() {
    int sockets[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) != 0) return false;
    // Forked before any thread, any X connection and Qt exist: the copy is
    // one thread of plain memory.
    m_guard = ::fork();
    if (m_guard == 0) {
        ::close(sockets[0]);
        guard(sockets[1]);
    }
    ::close(sockets[1]);
    if (m_guard < 0) {
        ::close(sockets[0]);
        return false;
    }
    m_guardSocket = sockets[0];
    return true;
}

void Headless::watch(const Child& child) {
    const int32_t pid = child.pid;
    // MSG_NOSIGNAL: a guard that is gone is no reason for SIGPIPE.
    ::send(m_guardSocket, &pid, sizeof pid, MSG_NOSIGNAL);
}

bool Headless::spawn(Child& child, const char* const argv[], int displayFd, std::string& error) {
    child.log = above(::memfd_create("tarvoke-headless-log", MFD_CLOEXEC));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    if (child.log >= 0) posix_spawn_file_actions_adddup2(&actions, child.log, STDERR_FILENO);
    if (displayFd >= 0) posix_spawn_file_actions_adddup2(&actions, displayFd, 3);
    // Nothing else of the player's: a pipe it inherited must not stay open
    // in a server that outlives it by a moment.
    posix_spawn_file_actions_addclosefrom_np(&actions, displayFd >= 0 ? 4 : 3);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    // A group of its own: Ctrl+C in a terminal reaches the player, which
    // stops the run and ends the screen after it, not the screen under a
    // running script.
    posix_spawnattr_setpgroup(&attributes, 0);
    sigset_t defaults;
    sigemptyset(&defaults);
    // SIGUSR1 ignored would make Xvfb signal its parent when ready.
    for (int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGUSR1}) sigaddset(&defaults, number);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    const int failed = ::posix_spawnp(&child.pid, argv[0], &actions, &attributes, const_cast<char* const*>(argv), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (failed) {
        child.pid = -1;
        error = failed == ENOENT ? "it is not installed" : std::strerror(failed);
        return false;
    }
    child.pidfd = pidfdOpen(child.pid);
    watch(child);
    return true;
}

std::string Headless::lastWords(const Child& child) {
    if (child.log < 0) return {};
    char buffer[4096];
    const off_t size = ::lseek(child.log, 0, SEEK_END);
    const off_t from = size > static_cast<off_t>(sizeof buffer) ? size - static_cast<off_t>(sizeof buffer) : 0;
    const ssize_t got = ::pread(child.log, buffer, sizeof buffer, from);
    if (got <= 0) return {};
    // Xvfb brackets its fatal error with "(EE)" lines: keep the words.
    std::vector<std::string> lines;
    std::string line;
    for (const char c : std::string(buffer, static_cast<size_t>(got)) + "\n") {
        if (c != '\n') {
            line += c;
            continue;
        }
        if (line.rfind("(EE)", 0) == 0) line.erase(0, 4);
        line.erase(0, line.find_first_not_of(" \t"));
        while (!line.empty() && (line.back() == ' ' || line.back() == '\t' || line.back() == '\r')) line.pop_back();
        if (!line.empty()) lines.push_back(line);
        line.clear();
    }
    std::string words;
    for (size_t i = lines.size() > 2 ? lines.size() - 2 : 0; i < lines.size(); ++i)
        words += (words.empty() ? "" : " ") + lines[i];
    return words;
}

std::unique_ptr<Headless> Headless::start(const HeadlessScreen& screen, std::string& error) {
    std::unique_ptr<Headless> headless(new Headless);
    if (!headless->startGuard()) {
        error = std::string("cannot start a virtual screen: ") + std::strerror(errno);
        return nullptr;
    }

    // Xvfb picks a free display itself and writes its number to fd 3 once
    // it accepts connections.
    int displayPipe[2];
    if (::pipe2(displayPipe, O_CLOEXEC) != 0) {
        error = std::string("cannot start a virtual screen: ") + std::strerror(errno);
        return nullptr;
    }
    const int displayIn = above(displayPipe[0]);
    const int displayOut = above(displayPipe[1]);
    const std::string geometry = std::to_string(screen.width) + "x" + std::to_string(screen.height) + "x24";
    const char* const serverArgs[] = {"Xvfb", "-displayfd", "3", "-screen", "0", geometry.c_str(),
                                      "-nolisten", "tcp", "-noreset", nullptr};
    std::string why;
    const bool spawned = headless->spawn(headless->m_server, serverArgs, displayOut, why);
    ::close(displayOut);
    if (!spawned) {
        ::close(displayIn);
        error = why == "it is not installed"
                    ? "cannot start a virtual screen: Xvfb is not installed (on Debian: apt install xvfb)"
                    : "cannot start Xvfb: " + why;
        return nullptr;
    }

    std::string number;
    const auto deadline = std::chrono::steady_clock::now() + kStartLimit;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd fd{displayIn, POLLIN, 0};
        const int ready = left.count() > 0 ? ::poll(&fd, 1, static_cast<int>(left.count())) : 0;
        if (ready < 0 && errno == EINTR) continue;
        if (ready == 0) {
            error = "Xvfb did not start within " + std::to_string(kStartLimit.count() / 1000) + " seconds";
            break;
        }
        char buffer[16];
        const ssize_t got = ::read(displayIn, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) {
            const std::string words = lastWords(headless->m_server);
            error = "Xvfb ended before its screen was ready" + (words.empty() ? "" : " (" + words + ")");
            break;
        }
        number.append(buffer, static_cast<size_t>(got));
        if (number.find('\n') != std::string::npos) break;
    }
    ::close(displayIn);
    if (!error.empty()) return nullptr;
    number.erase(number.find('\n'));
    headless->m_display = ":" + number;
    ::setenv("DISPLAY", headless->m_display.c_str(), 1);
    // The script and the programs it starts belong on this screen, also
    // when the player was started in a Wayland session.
    ::unsetenv("WAYLAND_DISPLAY");

    if (screen.windowManager.empty()) return headless;
    const std::string& wm = screen.windowManager;
    const char* const wmArgs[] = {wm.c_str(), nullptr};
    if (!headless->spawn(headless->m_windowManager, wmArgs, -1, why)) {
        error = "cannot start the window manager '" + wm + "': " + why;
        return nullptr;
    }
    using platform::x11::WindowManagerWait;
    switch (platform::x11::waitForWindowManager(headless->m_display, headless->m_windowManager.pidfd, kStartLimit)) {
    case WindowManagerWait::Ready:
        return headless;
    case WindowManagerWait::Ended: {
        const std::string words = lastWords(headless->m_windowManager);
        error = "the window manager '" + wm + "' ended before it was ready" + (words.empty() ? "" : " (" + words + ")");
        return nullptr;
    }
    case WindowManagerWait::TimedOut:
        error = "the window manager '" + wm + "' did not announce itself (_NET_SUPPORTING_WM_CHECK) within " +
                std::to_string(kStartLimit.count() / 1000) + " seconds";
        return nullptr;
    case WindowManagerWait::NoDisplay:
        error = "cannot open the virtual screen " + headless->m_display;
        return nullptr;
    }
    return headless;
}

Headless::~Headless() {
    // The window manager first, in the same breath: it ends on SIGTERM or
    // when its screen goes, whichever comes first.
    const int pidfds[] = {m_windowManager.pidfd, m_server.pidfd};
    endProcesses(pidfds, 2);
    // A kernel without pidfds (before Linux 5.3) gets the blunt way.
    for (const Child* child : {&m_windowManager, &m_server})
        if (child->pid > 0 && child->pidfd < 0) ::kill(child->pid, SIGKILL);
    for (Child* child : {&m_windowManager, &m_server}) {
        if (child->pid > 0)
            while (::waitpid(child->pid, nullptr, 0) < 0 && errno == EINTR) {}
        closeFd(child->pidfd);
        closeFd(child->log);
    }
    if (m_guard > 0) {
        const int32_t done = kDone;
        ::send(m_guardSocket, &done, sizeof done, MSG_NOSIGNAL);
        closeFd(m_guardSocket);
        while (::waitpid(m_guard, nullptr, 0) < 0 && errno == EINTR) {}
    }
}

std::string writeScreenshot(platform::ScreenCapture& screen, const std::string& path) {
    platform::PixelGrid grid;
    if (!screen.capture(grid)) return "cannot read the screen for the screenshot";
    std::string error;
    if (!platform::savePngFile(path, grid, error)) return "cannot write the screenshot '" + path + "': " + error;
    return {};
}

}  // namespace tarvoke::player
