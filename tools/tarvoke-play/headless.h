#pragma once
// A private virtual screen for one run (--headless): an Xvfb on a display
// it picks itself, optionally a window manager on it, both gone again when
// the run ends, however it ends.

#include <memory>
#include <string>
#include <sys/types.h>

#include "platform/capture.h"

namespace tarvoke::player {

struct HeadlessScreen {
    int width = 1920;
    int height = 1080;
    std::string windowManager;  // a program name or path; empty: none
};

class Headless {
public:
    // Starts Xvfb and the window manager, waits until both are ready, and
    // points DISPLAY at the new screen. nullptr, with the one line to say in
    // error, when it cannot.
    static std::unique_ptr<Headless> start(const HeadlessScreen& screen, std::string& error);
    // Ends the window manager and Xvfb and waits for them.
    ~Headless();
    Headless(const Headless&) = delete;
    Headless& operator=(const Headless&) = delete;

    const std::string& display() const { return m_display; }

private:
    struct Child {
        pid_t pid = -1;
        int pidfd = -1;
        int log = -1;  // its standard error, shown when it fails
    };
    Headless() = default;
    bool startGuard();
    bool spawn(Child& child, const char* const argv[], int displayFd, std::string& error);
    void watch(const Child& child);
    static std::string lastWords(const Child& child);

    std::string m_display;
    Child m_server;
    Child m_windowManager;
    pid_t m_guard = -1;
    int m_guardSocket = -1;
};

// Writes the whole screen as a PNG file; an empty string, else the reason it failed.
std::string writeScreenshot(platform::ScreenCapture& screen, const std::string& path);

}  // namespace tarvoke::player
