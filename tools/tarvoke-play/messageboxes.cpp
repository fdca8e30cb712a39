#include "messageboxes.h"

#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "programfolder.h"

extern char** environ;

namespace tarvoke::player {
namespace {

// The player's environment, where the box belongs on the X display the run
// acts on, whatever Qt platform the environment names.
std::vector<std::string> helperEnvironment(const std::string& marker) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry; ++entry)
        if (std::strncmp(*entry, "QT_QPA_PLATFORM=", 16) != 0) result.emplace_back(*entry);
    result.emplace_back("QT_QPA_PLATFORM=xcb");
    // The helper ends with the player; it checks that the player is still its parent.
    result.emplace_back("TARVOKE_MESSAGE_PARENT=" + std::to_string(::getpid()));
    if (!marker.empty()) result.push_back(marker);
    return result;
}

}  // namespace

HelperMessageBoxes::HelperMessageBoxes(platform::EventLoop& loop, std::string helper, std::string marker)
    : m_loop(loop), m_helper(helper.empty() ? programFolder() + "/tarvoke-message" : std::move(helper)),
      m_marker(std::move(marker)) {}

// Starts the helper with its standard input on socket; the process id, or
// -1 with errno set.
pid_t HelperMessageBoxes::startHelper(uint32_t flags, int socket) {
    const std::string& path = m_helper;
    const std::string flagsText = std::to_string(flags);
    std::vector<std::string> environment = helperEnvironment(m_marker);
    std::vector<char*> envp;
    for (std::string& entry : environment) envp.push_back(entry.data());
    envp.push_back(nullptr);
    char* argv[] = {const_cast<char*>(path.c_str()), const_cast<char*>(flagsText.c_str()), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, socket, STDIN_FILENO);
    pid_t pid = -1;
    const int error = posix_spawn(&pid, path.c_str(), &actions, nullptr, argv, envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        errno = error;
        return -1;
    }
    return pid;
}

namespace {

// The title, a zero byte and the text, then the end of the input.
void sendBox(int socket, const std::string& title, const std::string& text) {
    std::string input = title;
    input += '\0';
    input += text;
    for (size_t sent = 0; sent < input.size();) {
        const ssize_t count = ::send(socket, input.data() + sent, input.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;  // the helper is gone: its end is seen as any other
        sent += static_cast<size_t>(count);
    }
    ::shutdown(socket, SHUT_WR);
}

}  // namespace

void HelperMessageBoxes::show(uint32_t flags, const std::string& title, const std::string& text) {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        std::fprintf(stderr, "%s: cannot show a message box (%s); its text: %s\n", programName(), std::strerror(errno),
                     text.c_str());
        return;
    }
    const pid_t pid = startHelper(flags, ends[1]);
    const int startError = errno;
    ::close(ends[1]);
    if (pid < 0) {
        ::close(ends[0]);
        std::fprintf(stderr, "%s: cannot show a message box (%s: %s); its text: %s\n", programName(), m_helper.c_str(),
                     std::strerror(startError), text.c_str());
        return;
    }
    // A process descriptor becomes readable when the process ends.
    const int processFd = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
    m_open.push_back(pid);
    sendBox(ends[0], title, text);
    ::close(ends[0]);
    if (processFd >= 0) {
        bool ended = false;
        const auto watch = m_loop.watchReadable(processFd, [&ended] { ended = true; });
        while (!ended) m_loop.turn(true);
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {}
    if (processFd >= 0) ::close(processFd);
    m_open.erase(std::remove(m_open.begin(), m_open.end(), pid), m_open.end());
}

void HelperMessageBoxes::closeAll() {
    for (pid_t pid : m_open) ::kill(pid, SIGKILL);
}

}  // namespace tarvoke::player
