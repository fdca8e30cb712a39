#include "playback/hotkeys.h"

#include <cstdint>

namespace tarvoke::playback {
namespace {

constexpr uint8_t kControl = 17;

struct HotkeyRow {
    uint8_t vk;  // the digit of the main block, not the numeric pad's: its virtual key is its character
    Hotkey hotkey;
};

constexpr HotkeyRow kRows[] = {
    {'0', Hotkey::Stop},
    {'1', Hotkey::Pause},
    {'8', Hotkey::Record},
    {'9', Hotkey::Play},
};

bool allowed(Hotkey hotkey, HotkeyConditions conditions) {
    switch (hotkey) {
    case Hotkey::Stop: return true;
    case Hotkey::Pause: return conditions.correctTimeRunning;
    case Hotkey::Record:
    case Hotkey::Play: return !conditions.recording;
    }
    return false;
}

}  // namespace

std::vector<Hotkey> pollHotkeys(platform::KeyState& keys, HotkeyConditions conditions) {
    std::vector<Hotkey> fired;
    if (conditions.stopSeen) fired.push_back(Hotkey::Stop);
    if (!keys.isDown(kControl)) return fired;
    for (const HotkeyRow& row : kRows) {
        // Both reads happen for every row: the press bit is taken even when
        // the condition fails.
        const bool pressed = keys.pressedSinceLastRead(row.vk);
        const bool down = keys.isDown(row.vk);
        if (pressed && down && allowed(row.hotkey, conditions) && !(row.hotkey == Hotkey::Stop && conditions.stopSeen))
            fired.push_back(row.hotkey);
    }
    return fired;
}

bool stopKeysDown(platform::KeyState& keys) { return keys.isDown(kControl) && keys.isDown('0'); }

}  // namespace tarvoke::playback
