#pragma once
// The test window from C++ desktop tests: started as a child process that
// logs to a file of its own, read back as parsed events.

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace tarvoke::desktoptest {

// One log line: its key=value fields, and its first word as "type".
using Event = std::map<std::string, std::string>;

class TestWindow {
public:
    explicit TestWindow(std::vector<std::string> args = {}) {
        m_log = std::filesystem::temp_directory_path() / ("tarvoke-window-" + std::to_string(getpid()) + "-" +
                                                          std::to_string(s_count++) + ".log");
        std::filesystem::remove(m_log);
        args.insert(args.begin(), {TARVOKE_TESTWINDOW, "--log", m_log.string()});
        std::vector<char*> argv;
        for (auto& arg : args) argv.push_back(arg.data());
        argv.push_back(nullptr);
        m_pid = fork();
        if (m_pid == 0) {
            execv(argv[0], argv.data());
            _exit(127);
        }
        const auto ready = waitFor(1, {"ready"});
        if (ready.empty()) throw std::runtime_error("the test window did not become ready");
        m_ready = ready.front();
    }
    ~TestWindow() {
        kill(m_pid, SIGTERM);
        waitpid(m_pid, nullptr, 0);
        std::filesystem::remove(m_log);
    }

    unsigned long top() const { return std::stoul(m_ready.at("top"), nullptr, 16); }
    unsigned long child() const { return std::stoul(m_ready.at("child"), nullptr, 16); }
    // Root position of a point inside the top-level window or the child.
    int rootX(bool child, int x) const { return std::stoi(m_ready.at(child ? "childx" : "x")) + x; }
    int rootY(bool child, int y) const { return std::stoi(m_ready.at(child ? "childy" : "y")) + y; }

    // The logged lines of the types ("ready" is the first line's), once there
    // are count of them or after five seconds.
    std::vector<Event> waitFor(size_t count, const std::vector<std::string>& types) const {
        std::vector<Event> found;
        for (int i = 0; i < 500; ++i, std::this_thread::sleep_for(std::chrono::milliseconds(10))) {
            found.clear();
            std::ifstream in(m_log);
            for (std::string line; std::getline(in, line);) {
                std::istringstream words(line);
                Event event;
                words >> event["type"];
                for (std::string word; words >> word;)
                    if (const size_t equals = word.find('='); equals != std::string::npos)
                        event[word.substr(0, equals)] = word.substr(equals + 1);
                if (std::find(types.begin(), types.end(), event["type"]) != types.end()) found.push_back(event);
            }
            if (found.size() >= count) break;
        }
        return found;
    }

private:
    static inline int s_count = 0;
    std::filesystem::path m_log;
    pid_t m_pid = -1;
    Event m_ready;
};

}  // namespace tarvoke::desktoptest
