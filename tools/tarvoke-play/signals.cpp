#include "signals.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace tarvoke::player {
namespace {

int g_pipe[2] = {-1, -1};
std::atomic<unsigned> g_count{0};
std::atomic<int> g_last{0};
static_assert(std::atomic<unsigned>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "a signal handler may touch lock-free atomics only");

void writeSignal(int number) {
    g_last = number;
    ++g_count;
    const unsigned char byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &byte, 1);
}

}  // namespace

StopSignals::StopSignals(platform::EventLoop& loop, std::function<void(int)> onSignal)
    : m_onSignal(std::move(onSignal)) {
    if (::pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
    struct sigaction action {};
    action.sa_handler = writeSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    m_watch = loop.watchReadable(g_pipe[0], [this] { readSignal(); });
}

StopSignals::~StopSignals() {
    signal(SIGINT, SIG_DFL);
    signal(SIGTERM, SIG_DFL);
    m_watch.reset();
}

unsigned StopSignals::count() { return g_count; }
int StopSignals::last() { return g_last; }

void StopSignals::readSignal() {
    unsigned char byte = 0;
    while (::read(g_pipe[0], &byte, 1) == 1) m_onSignal(byte);
}

}  // namespace tarvoke::player
