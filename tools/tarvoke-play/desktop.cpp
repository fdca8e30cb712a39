#include "desktop.h"

#include <chrono>
#include <cstdlib>
#include <utility>

#include "platform/x11/x11platform.h"
#include "playback/hotkeys.h"

namespace tarvoke::player {
namespace {

constexpr int kPollIntervalMs = 1;

bool isSet(const char* name) {
    const char* value = std::getenv(name);
    return value && *value;
}

}  // namespace

std::string desktopProblem() {
    if (!isSet("DISPLAY")) return "no display: DISPLAY is not set (use --dry-run to run without a desktop)";
    return {};
}

std::string waylandNotice() {
    return isSet("WAYLAND_DISPLAY") ? "this is a Wayland session: tarvoke-play acts on X11 windows only" : "";
}

namespace {
Desktop* g_open = nullptr;
}  // namespace

std::unique_ptr<Desktop> Desktop::open(platform::EventLoop& loop, std::string messageHelper, std::string messageMarker) {
    std::unique_ptr<Desktop> desktop(new Desktop(loop, std::move(messageHelper), std::move(messageMarker)));
    desktop->m_x11 = platform::x11::X11Platform::open(loop);
    if (!desktop->m_x11) return nullptr;
    g_open = desktop.get();
    return desktop;
}

Desktop::Desktop(platform::EventLoop& loop, std::string messageHelper, std::string messageMarker)
    : m_loop(loop), m_messages(loop, std::move(messageHelper), std::move(messageMarker)) {}

// Also on the way out of an error.
Desktop::~Desktop() {
    if (g_open == this) g_open = nullptr;
    if (m_x11) m_x11->input().releaseAll();
}

platform::Platform Desktop::platform() { return m_x11->platform(&m_messages); }

void Desktop::pollHotkeys(std::function<void()> onStop) {
    m_poll = m_loop.every(std::chrono::milliseconds(kPollIntervalMs),
                          [this, onStop = std::move(onStop)] { pollHotkeysOnce(onStop); });
}

void Desktop::pollHotkeysOnce(const std::function<void()>& onStop) {
    for (playback::Hotkey hotkey : playback::pollHotkeys(m_x11->keys(), {.stopSeen = std::exchange(m_stopSeen, false)}))
        if (hotkey == playback::Hotkey::Stop) onStop();
}

bool Desktop::stopKeysDown() {
    // The key state learns of Ctrl+0 from events that a turn of the loop
    // reads; a long step reads them itself, at most once a millisecond.
    const auto now = std::chrono::steady_clock::now();
    if (now - m_lastKeyRead < std::chrono::milliseconds(1)) return m_stopSeen;
    m_lastKeyRead = now;
    m_x11->connection().drainEvents();
    // Held now, perhaps up again by the next poll: that poll stops the run all the same.
    if (playback::stopKeysDown(m_x11->keys())) m_stopSeen = true;
    return m_stopSeen;
}

void Desktop::releaseAll() { m_x11->input().releaseAll(); }

void Desktop::releaseAllOfOpen() {
    if (g_open) g_open->releaseAll();
}

}  // namespace tarvoke::player
