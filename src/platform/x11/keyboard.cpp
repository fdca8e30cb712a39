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
    m_x.onEvent([this](XEvent& event) { onEvent(event); });
}

Keyboard::~Keyboard() {
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

void Keyboard::bindSpares(const std::vector<KeySym>& keysyms) {
    bool changed = false;
    for (KeySym keysym : keysyms) {
        if (keysym == NoSymbol || !keycodesOf(keysym).empty()) continue;
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
