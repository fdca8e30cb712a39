#include "platform/x11/keyboard.h"

#include <X11/Xutil.h>

#include <algorithm>
#include <thread>

namespace tarvoke::platform::x11 {
namespace {

constexpr std::chrono::milliseconds kLookupGrace{200};

}  // namespace

Keyboard::Keyboard(Connection& connection) : m_x(connection) {
    XDisplayKeycodes(m_x.display(), &m_min, &m_max);
    load();
    for (int code = m_max; code >= m_min; --code) {
        const KeySym* row = &m_map[static_cast<size_t>(code - m_min) * m_perKeycode];
        if (std::all_of(row, row + m_perKeycode, [](KeySym s) { return s == NoSymbol; }))
            m_spares.push_back(static_cast<KeyCode>(code));
    }
    int opcode = 0, error = 0, major = XkbMajorVersion, minor = XkbMinorVersion;
    if (XkbQueryExtension(m_x.display(), &opcode, &m_xkbEventBase, &error, &major, &minor)) {
        XkbSelectEvents(m_x.display(), XkbUseCoreKbd, XkbMapNotifyMask | XkbNewKeyboardNotifyMask,
                        XkbMapNotifyMask | XkbNewKeyboardNotifyMask);
        XkbSelectEventDetails(m_x.display(), XkbUseCoreKbd, XkbStateNotify, XkbGroupStateMask, XkbGroupStateMask);
    } else {
        m_xkbEventBase = -1;
    }
    m_x.onEvent([this](XEvent& event) { onEvent(event); });
}

Keyboard::~Keyboard() {
    if (m_xkb) XkbFreeKeyboard(m_xkb, 0, True);
    if (m_bound.empty()) return;
    // Clients look a keysym up when they handle the key event, which can be
    // a moment after we sent it: give them that moment before the spare
    // keycodes carry nothing again.
    std::this_thread::sleep_until(m_lastBinding + kLookupGrace);
    std::vector<KeySym> none(static_cast<size_t>(m_perKeycode), NoSymbol);
    for (KeyCode code : m_bound) XChangeKeyboardMapping(m_x.display(), code, m_perKeycode, none.data(), 1);
    m_bound.clear();
    publishBound();
    XSync(m_x.display(), False);
}

void Keyboard::publishBound() {
    std::vector<std::pair<KeyCode, KeySym>> bindings;
    for (KeyCode code : m_bound) bindings.emplace_back(code, m_map[static_cast<size_t>(code - m_min) * m_perKeycode]);
    m_record.publish(bindings);
}

void Keyboard::load() {
    int per = 0;
    KeySym* map = XGetKeyboardMapping(m_x.display(), static_cast<KeyCode>(m_min), m_max - m_min + 1, &per);
    m_perKeycode = std::max(per, 1);
    m_map.assign(static_cast<size_t>(m_max - m_min + 1) * m_perKeycode, NoSymbol);
    if (map) {
        std::copy(map, map + m_map.size(), m_map.begin());
        XFree(map);
    }
    m_stale = false;
    m_codesOf.clear();
}

void Keyboard::onEvent(XEvent& event) {
    if (m_xkbEventBase >= 0 && event.type == m_xkbEventBase) {
        const auto& xkb = reinterpret_cast<const XkbEvent&>(event);
        if (xkb.any.xkb_type == XkbStateNotify) {
            m_group = xkb.state.group;
        } else if (xkb.any.xkb_type == XkbMapNotify || xkb.any.xkb_type == XkbNewKeyboardNotify) {
            // Our own bindings change the map too; reading it again is
            // cheap beside typing.
            m_xkbStale = true;
            if (m_ownChanges == 0) {
                m_stale = true;
                ++m_version;
            }
        }
        return;
    }
    if (event.type != MappingNotify || event.xmapping.request != MappingKeyboard) return;
    // Our own bindings are in the local map already; only another
    // client's change makes it stale.
    if (m_ownChanges > 0) {
        --m_ownChanges;
        return;
    }
    m_stale = true;
    ++m_version;
}

int Keyboard::levelOf(KeyCode keycode, KeySym keysym) {
    if (m_stale) load();
    if (keycode < m_min || keycode > m_max) return -1;
    const size_t row = static_cast<size_t>(keycode - m_min) * m_perKeycode;
    for (int level = 0; level < m_perKeycode; ++level)
        if (m_map[row + level] == keysym) return level;
    return -1;
}

const std::vector<KeyCode>& Keyboard::keycodesOf(KeySym keysym) {
    static const std::vector<KeyCode> kNone;
    if (m_stale) load();
    if (keysym == NoSymbol) return kNone;
    if (auto it = m_codesOf.find(keysym); it != m_codesOf.end()) return it->second;
    std::vector<KeyCode> codes;
    for (int code = m_min; code <= m_max; ++code)
        if (levelOf(static_cast<KeyCode>(code), keysym) >= 0) codes.push_back(static_cast<KeyCode>(code));
    return m_codesOf.emplace(keysym, std::move(codes)).first->second;
}

KeyCode Keyboard::keycodeOfEvdev(uint16_t evdevCode) const {
    const int code = evdevCode + 8;
    return evdevCode == 0 || code < m_min || code > m_max ? 0 : static_cast<KeyCode>(code);
}

KeyCode Keyboard::takeSpare() {
    if (!m_spares.empty()) {
        const KeyCode code = m_spares.back();
        m_spares.pop_back();
        return code;
    }
    // Reuse the binding made longest ago that is not held down.
    for (auto it = m_bound.begin(); it != m_bound.end(); ++it) {
        if (m_held[*it] > 0) continue;
        const KeyCode code = *it;
        m_bound.erase(it);
        return code;
    }
    return 0;
}

void Keyboard::bindSpares(const std::vector<KeySym>& keysyms, bool forTyping) {
    bool changed = false;
    for (KeySym keysym : keysyms) {
        if (keysym == NoSymbol || (forTyping ? typingOf(keysym).has_value() : !keycodesOf(keysym).empty())) continue;
        const KeyCode code = takeSpare();
        if (code == 0) break;
        // The keysym at the plain and the shifted level, so that a held
        // Shift still types it.
        std::vector<KeySym> row(static_cast<size_t>(m_perKeycode), NoSymbol);
        row[0] = keysym;
        if (m_perKeycode > 1) row[1] = keysym;
        XChangeKeyboardMapping(m_x.display(), code, m_perKeycode, row.data(), 1);
        const long offset = static_cast<long>(code - m_min) * m_perKeycode;
        for (int level = 0; level < m_perKeycode; ++level) m_codesOf.erase(m_map[static_cast<size_t>(offset + level)]);
        std::copy(row.begin(), row.end(), m_map.begin() + offset);
        m_codesOf.erase(keysym);
        m_bound.push_back(code);
        m_xkbStale = true;
        m_lastBinding = std::chrono::steady_clock::now();
        ++m_ownChanges;
        ++m_version;
        changed = true;
    }
    if (!changed) return;
    publishBound();
    XSync(m_x.display(), False);
}

void Keyboard::setHeld(KeyCode keycode, bool held) {
    if (held) ++m_held[keycode];
    else if (m_held[keycode] > 0) --m_held[keycode];
}

}  // namespace tarvoke::platform::x11

namespace tarvoke::platform::x11 {

void Keyboard::loadXkb() {
    m_xkbStale = false;
    m_typings.clear();
    if (m_xkbEventBase < 0) return;
    if (m_xkb) XkbFreeKeyboard(m_xkb, 0, True);
    m_xkb = XkbGetMap(m_x.display(), XkbKeyTypesMask | XkbKeySymsMask | XkbModifierMapMask, XkbUseCoreKbd);
    XkbStateRec state{};
    if (XkbGetState(m_x.display(), XkbUseCoreKbd, &state) == Success) m_group = state.group;
}

std::optional<Keyboard::Typing> Keyboard::typingOf(KeySym keysym) {
    if (m_xkbStale) loadXkb();
    if (keysym == NoSymbol) return std::nullopt;
    if (m_typingsGroup != m_group) m_typings.clear(), m_typingsGroup = m_group;
    if (auto it = m_typings.find(keysym); it != m_typings.end()) return it->second;
    return m_typings[keysym] = findTyping(keysym);
}

std::optional<Keyboard::Typing> Keyboard::findTyping(KeySym keysym) {
    if (!m_xkb || !m_xkb->map) {
        // Without XKB: the core map's plain and shifted levels.
        for (KeyCode code : keycodesOf(keysym)) {
            const int level = levelOf(code, keysym);
            if (level == 0 || level == 1) return Typing{code, level == 1 ? unsigned{ShiftMask} : 0u};
        }
        return std::nullopt;
    }
    std::optional<Typing> best;
    int bestCost = 0;
    for (int code = m_xkb->min_key_code; code <= m_xkb->max_key_code; ++code) {
        const int groups = XkbKeyNumGroups(m_xkb, code);
        if (groups == 0) continue;
        // A group beyond the key's own wraps round, as XKB's default says.
        const int group = m_group % groups;
        XkbKeyTypePtr type = XkbKeyKeyType(m_xkb, code, group);
        const int width = XkbKeyGroupsWidth(m_xkb, code);
        for (int level = 0; level < type->num_levels && level < width; ++level) {
            if (XkbKeySymEntry(m_xkb, code, level, group) != keysym) continue;
            // The modifiers of the level: none for the first, else the
            // type's entry for it with the fewest (never Lock).
            std::optional<unsigned> mods;
            if (level == 0) mods = 0;
            for (int i = 0; i < type->map_count; ++i) {
                const XkbKTMapEntryRec& entry = type->map[i];
                if (!entry.active || entry.level != level || (entry.mods.mask & LockMask)) continue;
                if (!mods || __builtin_popcount(entry.mods.mask) < __builtin_popcount(*mods)) mods = entry.mods.mask;
            }
            if (!mods) continue;
            bool reachable = true;
            for (unsigned bit = ShiftMask; bit <= Mod5Mask; bit <<= 1)
                if ((*mods & bit) && modifierKeycode(bit) == 0) reachable = false;
            const int cost = __builtin_popcount(*mods);
            if (reachable && (!best || cost < bestCost)) {
                best = Typing{static_cast<KeyCode>(code), *mods};
                bestCost = cost;
            }
        }
    }
    return best;
}

KeyCode Keyboard::modifierKeycode(unsigned bit) {
    if (m_xkbStale) loadXkb();
    if (!m_xkb || !m_xkb->map || !m_xkb->map->modmap) return 0;
    for (int code = m_xkb->min_key_code; code <= m_xkb->max_key_code; ++code)
        if ((m_xkb->map->modmap[code] & bit) && XkbKeyNumSyms(m_xkb, code) > 0) return static_cast<KeyCode>(code);
    return 0;
}

}  // namespace tarvoke::platform::x11
