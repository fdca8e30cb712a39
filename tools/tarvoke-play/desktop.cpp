#include "desktop.h"

#include <QTimer>
#include <cstdlib>

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

std::unique_ptr<Desktop> Desktop::open() {
    std::unique_ptr<Desktop> desktop(new Desktop());
    desktop->m_x11 = platform::x11::X11Platform::open();
    if (!desktop->m_x11) return nullptr;
    return desktop;
}

Desktop::~Desktop() = default;

platform::Platform Desktop::platform() { return m_x11->platform(&m_messages); }

void Desktop::pollHotkeys(std::function<void()> onStop) {
    m_poll = std::make_unique<QTimer>();
    m_poll->setInterval(kPollIntervalMs);
    QObject::connect(m_poll.get(), &QTimer::timeout, [this, onStop = std::move(onStop)] { pollHotkeysOnce(onStop); });
    m_poll->start();
}

void Desktop::pollHotkeysOnce(const std::function<void()>& onStop) {
    for (playback::Hotkey hotkey : playback::pollHotkeys(m_x11->keys()))
        if (hotkey == playback::Hotkey::Stop) onStop();
}

void Desktop::releaseAll() { m_x11->input().releaseAll(); }

}  // namespace tarvoke::player
