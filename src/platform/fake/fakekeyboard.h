#pragma once
// A keyboard for logic tests: a map of keycodes to keysyms at their levels,
// the keycodes and buttons that are down, and the virtual-key rule of the
// key table read over them, as the X11 layer reads its own keymap.

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <map>
#include <vector>

#include "platform/keytable.h"
#include "platform/keystate.h"

namespace tarvoke::platform::fake {

class FakeKeyboard : public KeyboardView, public KeyState {
public:
    // A US map: the digits, letters, modifiers and OEM keys where a US
    // keyboard has them, every other keysym of the key table on a keycode of
    // its own, Alt_R present.
    static FakeKeyboard us();
    // A French map: the digit keys type "&", "é" ... and carry the digits at
    // the second level, and the right Alt key is ISO_Level3_Shift.
    static FakeKeyboard azerty();

    void setKey(uint8_t keycode, std::vector<uint32_t> keysyms) { m_map[keycode] = std::move(keysyms); }
    void setKeycodeDown(uint8_t keycode, bool down) { m_keycodesDown[keycode] = down; }
    void setButtonDown(uint8_t button, bool down) { m_buttonsDown[button] = down; }
    void releaseAll();

    // The keycode a press of vk goes to, as the X11 layer chooses it; 0 when
    // the number presses a button or nothing.
    uint8_t keycodeFor(uint8_t vk) const;
    // Presses or releases what vk means: its keycode, or its button.
    void pressVirtualKey(uint8_t vk, bool down);

    bool carriesKeysym(uint32_t keysym) const override;
    bool keysymDown(uint32_t keysym) const override;
    bool physicalDown(uint16_t evdevCode) const override;
    bool buttonDown(uint8_t button) const override;

    bool isDown(uint8_t vk) override { return isVirtualKeyDown(vk, *this); }
    bool pressedSinceLastRead(uint8_t vk) override;

    // Changes are told as the display would: change() presses or releases
    // what vk means and tells the listener, stamped with the display's time.
    bool onChange(std::function<void(const InputChange&)> listener) override {
        m_listener = std::move(listener);
        return true;
    }
    void change(uint8_t vk, bool down, uint32_t time, std::optional<Point> pointer = std::nullopt);
    // A move of the pointer.
    void moved(uint32_t time, Point to);

private:
    uint8_t keycodeCarrying(uint32_t keysym) const;

    std::map<uint8_t, std::vector<uint32_t>> m_map;
    std::array<bool, 256> m_keycodesDown{};
    std::array<bool, 16> m_buttonsDown{};
    std::array<bool, 256> m_wasDown{};
    std::function<void(const InputChange&)> m_listener;
};

}  // namespace tarvoke::platform::fake
