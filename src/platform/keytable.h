#pragma once
// What each Windows virtual-key number means on X. Scripts and recordings
// keep the virtual-key numbers; this table is the one place that says which
// keysym, physical key or mouse button a number stands for. It holds plain
// numbers (X keysym values, Linux evdev codes) so that the core needs no
// Xlib; the X11 layer turns them into keycodes of the map in force.

#include <cstdint>
#include <string_view>

namespace tarvoke::platform {

enum class KeyKind : uint8_t {
    None,      // a number Windows leaves reserved or unassigned: never down, presses nothing
    Button,    // a mouse button
    Keysym,    // the keycode that carries this keysym at any level
    Physical,  // an OEM key: the key at that place on a US keyboard
};

struct KeyMeaning {
    KeyKind kind = KeyKind::None;
    // Keysym: the X keysym value. fallbackKeysym, when not 0, stands in where
    // the map carries no keycode for keysym (Alt_R on maps with AltGr).
    uint32_t keysym = 0;
    uint32_t fallbackKeysym = 0;
    // Physical: the evdev code (X keycode = evdev code + 8 on evdev servers).
    uint16_t evdevCode = 0;
    // Button: the X button number (1 left, 2 middle, 3 right, 8 and 9 side).
    uint8_t button = 0;
    // The keysym's name, the key's US legend or the button's name.
    std::string_view name;
};

// The meaning of a virtual-key number; every number 0 to 255 has an entry.
const KeyMeaning& keyMeaning(uint8_t vk);

// The generic modifiers 16 (Shift), 17 (Ctrl) and 18 (Alt) read down while
// either side is down; here are their sides.
struct KeySides {
    uint8_t left = 0;
    uint8_t right = 0;
};
// The two sides of a generic modifier, or {0, 0} for any other number.
KeySides sidesOf(uint8_t vk);

// What the keyboard map and the state of the keys say. The X11 layer answers
// from its keymap and its table of keys down; the fake platform from a map
// of its own.
class KeyboardView {
public:
    virtual ~KeyboardView() = default;
    // Some keycode carries the keysym, at any level.
    virtual bool carriesKeysym(uint32_t keysym) const = 0;
    // Some keycode that carries the keysym, at any level, is down.
    virtual bool keysymDown(uint32_t keysym) const = 0;
    virtual bool physicalDown(uint16_t evdevCode) const = 0;
    virtual bool buttonDown(uint8_t button) const = 0;
};

// The keysym that stands for a Keysym entry on this map: its own, or its
// fallback where the map carries only the fallback.
uint32_t effectiveKeysym(const KeyMeaning& meaning, const KeyboardView& view);

// The state of a virtual key as GetKeyState reports it, by the rule above.
bool isVirtualKeyDown(uint8_t vk, const KeyboardView& view);

}  // namespace tarvoke::platform
