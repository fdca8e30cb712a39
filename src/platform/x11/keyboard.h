#pragma once
// The keyboard map as the X server holds it, kept locally, and the spare
// keycodes that carry keysyms no key carries. What a virtual-key number
// means is the key table's business (host/keytable.h); this turns its
// keysyms and evdev codes into keycodes of the map in force.

#include "platform/x11/connection.h"
#include "platform/x11/leftovers.h"

#include <X11/XKBlib.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

namespace tarvoke::platform::x11 {

class Keyboard {
public:
    explicit Keyboard(Connection& connection);
    ~Keyboard();

    // Every keycode that carries the keysym at any level.
    // The reference lives until the keyboard map changes; the key state reads
    // it on every tick, so it is never copied.
    const std::vector<KeyCode>& keycodesOf(KeySym keysym);
    // The level (0 plain, 1 shifted, ...) at which a keycode carries the keysym; -1 if not.
    int levelOf(KeyCode keycode, KeySym keysym);
    // How to type a keysym on the map and group in force: a keycode that
    // carries it, and the modifiers (Shift, Mod5 for AltGr ...) its level
    // needs. Nothing when no key carries it in this group.
    struct Typing {
        KeyCode code = 0;
        unsigned mods = 0;
    };
    std::optional<Typing> typingOf(KeySym keysym);
    // A keycode that sets the real modifier bit (ShiftMask ... Mod5Mask); 0 if none.
    KeyCode modifierKeycode(unsigned bit);
    // The X keycode of a physical key (evdev code + 8); 0 when out of range.
    KeyCode keycodeOfEvdev(uint16_t evdevCode) const;

    // Binds every keysym of the list that no keycode carries yet to a spare
    // keycode, in one batch, and waits until the server has them (one round
    // trip, none when nothing needed binding). A binding stays until its
    // keycode is needed for another keysym and is not held down.
    // With forTyping, a keysym counts as carried only when typingOf finds it.
    void bindSpares(const std::vector<KeySym>& keysyms, bool forTyping = false);
    void setHeld(KeyCode keycode, bool held);
    // Changes whenever the map may have changed (another client's change, or
    // a binding of ours), for those who keep answers drawn from it.
    uint64_t version() const { return m_version; }

private:
    void load();
    void onEvent(XEvent& event);
    KeyCode takeSpare();
    void loadXkb();
    std::optional<Typing> findTyping(KeySym keysym);
    // Lists the bound spares where the next start finds them if we are killed.
    void publishBound();

    // The XKB map (key types, symbols per group, modifier map) and the
    // group in force, both followed through XKB's notify events.
    XkbDescPtr m_xkb = nullptr;
    int m_xkbEventBase = -1;
    int m_group = 0;
    bool m_xkbStale = true;
    std::unordered_map<KeySym, std::optional<Typing>> m_typings;  // for m_group, cleared with the map
    int m_typingsGroup = 0;

    Connection& m_x;
    int m_min = 8;
    int m_max = 255;
    int m_perKeycode = 1;
    std::vector<KeySym> m_map;  // (keycode - m_min) * m_perKeycode + level
    bool m_stale = false;
    uint64_t m_version = 0;
    std::vector<KeyCode> m_spares;          // keycodes that carry nothing in the server's map
    std::vector<KeyCode> m_bound;           // spares in use, least recently bound first
    std::map<KeyCode, int> m_held;
    std::chrono::steady_clock::time_point m_lastBinding;
    int m_ownChanges = 0;                   // mapping notices that our own bindings will cause
    std::unordered_map<KeySym, std::vector<KeyCode>> m_codesOf;  // cache of keycodesOf, cleared with the map
    SpareKeycodeRecord m_record{m_x};
};

}  // namespace tarvoke::platform::x11
