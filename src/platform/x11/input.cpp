#include "platform/x11/input.h"

#include <X11/XKBlib.h>
#include <X11/keysym.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <cstdlib>
#include <optional>

namespace tarvoke::platform::x11 {
namespace {

struct ButtonFlag {
    uint32_t flag;
    unsigned button;
    bool press;
};

constexpr ButtonFlag kButtonFlags[] = {
    {kLeftDown, 1, true},    {kLeftUp, 1, false},    {kRightDown, 3, true},
    {kRightUp, 3, false},    {kMiddleDown, 2, true}, {kMiddleUp, 2, false},
};

// The button messages of the target-window road.
struct ButtonMessage {
    uint32_t message;
    unsigned button;
    bool press;
};

constexpr ButtonMessage kButtonMessages[] = {
    {513, 1, true}, {514, 1, false}, {516, 3, true}, {517, 3, false}, {519, 2, true}, {520, 2, false},
};

constexpr uint32_t kKeyDownMessage = 256;
constexpr uint32_t kKeyUpMessage = 257;

}  // namespace

// A pointer query sent through the connection's XCB side, which lets a
// request go out now and its answer be read later.
class PointerQuery {
public:
    PointerQuery(Connection& connection, Window root)
        : m_x(connection), m_cookie(xcb_query_pointer(m_x.xcb(), root)) {}
    ~PointerQuery() {
        if (!m_point) xcb_discard_reply(m_x.xcb(), m_cookie.sequence);
    }
    PointerQuery(const PointerQuery&) = delete;
    PointerQuery& operator=(const PointerQuery&) = delete;
    Point get() {
        if (!m_point) {
            xcb_query_pointer_reply_t* reply = xcb_query_pointer_reply(m_x.xcb(), m_cookie, nullptr);
            m_x.noteXcbRead();
            m_point = reply ? Point{reply->root_x, reply->root_y} : Point{};
            std::free(reply);
        }
        return *m_point;
    }

private:
    Connection& m_x;
    xcb_query_pointer_cookie_t m_cookie;
    std::optional<Point> m_point;
};

namespace {

// One query's answer as each of the clicks that share it holds it.
class SharedPointerQuery : public PendingPoint {
public:
    explicit SharedPointerQuery(std::shared_ptr<PointerQuery> query) : m_query(std::move(query)) {}
    Point get() override { return m_query->get(); }
    // Root coordinates travel as 16-bit numbers.
    bool fitsInt16() const override { return true; }

private:
    std::shared_ptr<PointerQuery> m_query;
};

}  // namespace

KeySym keysymOfCharacter(const std::string& character) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(character.data());
    const size_t size = character.size();
    if (size == 0) return NoSymbol;
    uint32_t codepoint = bytes[0];
    size_t length = 1;
    if (codepoint >= 0xF0) codepoint &= 0x07, length = 4;
    else if (codepoint >= 0xE0) codepoint &= 0x0F, length = 3;
    else if (codepoint >= 0xC0) codepoint &= 0x1F, length = 2;
    else if (codepoint >= 0x80) return NoSymbol;
    if (size < length) return NoSymbol;
    for (size_t i = 1; i < length; ++i) {
        if ((bytes[i] & 0xC0) != 0x80) return NoSymbol;
        codepoint = (codepoint << 6) | (bytes[i] & 0x3F);
    }
    switch (codepoint) {
    case '\n':
    case '\r': return XK_Return;
    case '\t': return XK_Tab;
    case '\b': return XK_BackSpace;
    case 0x1B: return XK_Escape;
    default: break;
    }
    if (codepoint < 0x20 || codepoint == 0x7F) return NoSymbol;
    // Latin-1 keysyms equal their code points; the rest are Unicode keysyms.
    if (codepoint <= 0xFF) return codepoint;
    return 0x1000000 + codepoint;
}

void X11Input::fakeInput(uint8_t type, uint8_t detail, int32_t x, int32_t y) {
    // No root window: the one the pointer is on. Positions travel as 16-bit
    // numbers.
    xcb_test_fake_input(m_x.xcb(), type, detail, XCB_CURRENT_TIME, XCB_NONE, static_cast<int16_t>(x),
                        static_cast<int16_t>(y), 0);
    m_x.queued();
}

void X11Input::setCursorPos(int32_t x, int32_t y) {
    fakeInput(XCB_MOTION_NOTIFY, 0, x, y);
    m_cursor.reset();
    m_burstQuery.reset();
}

Point X11Input::cursorPos() {
    const auto now = std::chrono::steady_clock::now();
    const bool known = m_cursor && m_keys.followsPointer() && m_keys.motions() == m_cursorMotions;
    if (known && now - m_cursorAsked < kWarpCheck) return *m_cursor;
    // Counted before asking: a move that lands after the answer asks again.
    m_cursorMotions = m_keys.motions();
    m_cursorAsked = now;
    const Connection::Pointer pointer = m_x.queryPointer();
    m_cursor = Point{pointer.x, pointer.y};
    return *m_cursor;
}

std::unique_ptr<PendingPoint> X11Input::askCursorPos() {
    // Goes out with the next flush, ahead of what is queued after it. The
    // clicks of one burst share it while no move of ours lies between them.
    if (!m_burstQuery || m_burstQueryFlushes != m_x.flushes()) {
        m_burstQuery = std::make_shared<PointerQuery>(m_x, m_x.root());
        m_burstQueryFlushes = m_x.flushes();
    }
    return std::make_unique<SharedPointerQuery>(m_burstQuery);
}

void X11Input::mouseEvent(uint32_t flags) {
    for (const ButtonFlag& entry : kButtonFlags) {
        if (entry.flag != flags) continue;
        fakeInput(entry.press ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, static_cast<uint8_t>(entry.button));
        if (entry.press) m_heldButtons.insert(entry.button);
        else m_heldButtons.erase(entry.button);
        return;
    }
}

KeySym X11Input::keysymOf(uint8_t vk) {
    const host::KeyMeaning& meaning = host::keyMeaning(vk);
    return meaning.kind == host::KeyKind::Keysym ? host::effectiveKeysym(meaning, m_mapView) : NoSymbol;
}

KeyCode X11Input::keycodeForPress(uint8_t vk) {
    const host::KeyMeaning& meaning = host::keyMeaning(vk);
    if (meaning.kind == host::KeyKind::Physical) return m_keyboard.keycodeOfEvdev(meaning.evdevCode);
    const KeySym keysym = keysymOf(vk);
    if (keysym == NoSymbol) return 0;
    m_keyboard.bindSpares({keysym});
    const auto codes = m_keyboard.keycodesOf(keysym);
    if (codes.empty()) return 0;
    // The key is pressed alone, so prefer one that carries the keysym at
    // its plain level.
    for (KeyCode code : codes)
        if (m_keyboard.levelOf(code, keysym) == 0) return code;
    return codes.front();
}

void X11Input::pressKeycode(KeyCode code, bool press) {
    fakeInput(press ? XCB_KEY_PRESS : XCB_KEY_RELEASE, code);
    m_keyboard.setHeld(code, press);
    if (press) {
        m_heldKeys.insert(code);
    } else if (auto it = m_heldKeys.find(code); it != m_heldKeys.end()) {
        m_heldKeys.erase(it);
    }
}

void X11Input::pressVk(uint8_t vk, bool press) {
    KeyCode code = 0;
    if (press) {
        code = keycodeForPress(vk);
        if (code != 0) m_vkCodes[vk] = code;
    } else if (auto it = m_vkCodes.find(vk); it != m_vkCodes.end()) {
        // A release goes to the key the press went to, also when the map
        // has changed meanwhile.
        code = it->second;
        m_vkCodes.erase(it);
    } else {
        code = keycodeForPress(vk);
    }
    if (code != 0) pressKeycode(code, press);
}

void X11Input::keyEvent(uint8_t vk, uint32_t flags) {
    pressVk(vk, flags != kKeyRelease);
}

void X11Input::typeKeysym(KeySym keysym) {
    const auto codes = m_keyboard.keycodesOf(keysym);
    KeyCode plain = 0, shifted = 0;
    for (KeyCode code : codes) {
        const int level = m_keyboard.levelOf(code, keysym);
        if (level == 0 && plain == 0) plain = code;
        if (level == 1 && shifted == 0) shifted = code;
    }
    const auto shiftCodes = m_keyboard.keycodesOf(XK_Shift_L);
    const KeyCode shift = shiftCodes.empty() ? 0 : shiftCodes.front();
    const KeyCode code = plain ? plain : shifted;
    if (code == 0) return;
    const bool withShift = plain == 0 && shift != 0;
    if (withShift) pressKeycode(shift, true);
    pressKeycode(code, true);
    pressKeycode(code, false);
    if (withShift) pressKeycode(shift, false);
}

void X11Input::sendKeys(const std::string&, const std::vector<KeyStroke>& strokes) {
    // Characters that only a level beyond Shift carries (AltGr) get a
    // spare keycode too: typing them needs no modifier then.
    std::vector<KeySym> needed;
    for (const KeyStroke& stroke : strokes) {
        if (stroke.kind == KeyStroke::Kind::Type) {
            const KeySym keysym = keysymOfCharacter(stroke.text);
            bool reachable = false;
            for (KeyCode code : m_keyboard.keycodesOf(keysym)) reachable |= m_keyboard.levelOf(code, keysym) <= 1;
            if (!reachable) needed.push_back(keysym);
        } else if (const KeySym keysym = keysymOf(stroke.vk); keysym != NoSymbol) {
            needed.push_back(keysym);
        }
    }
    m_keyboard.bindSpares(needed);
    for (const KeyStroke& stroke : strokes) {
        switch (stroke.kind) {
        case KeyStroke::Kind::Press: pressVk(stroke.vk, true); break;
        case KeyStroke::Kind::Release: pressVk(stroke.vk, false); break;
        case KeyStroke::Kind::Type: typeKeysym(keysymOfCharacter(stroke.text)); break;
        }
    }
}

void X11Input::sendButton(Window window, uint32_t message, uint32_t lParam) {
    for (const ButtonMessage& entry : kButtonMessages) {
        if (entry.message != message) continue;
        XEvent event{};
        XButtonEvent& button = event.xbutton;
        button.type = entry.press ? ButtonPress : ButtonRelease;
        button.display = m_x.display();
        button.window = window;
        button.root = m_x.root();
        button.subwindow = None;
        button.time = CurrentTime;
        // The packed position holds two signed 16-bit halves, x low.
        button.x = static_cast<int16_t>(lParam & 0xFFFF);
        button.y = static_cast<int16_t>(lParam >> 16);
        button.x_root = button.x;
        button.y_root = button.y;
        // A release carries the button's own mask, as the server's do.
        button.state = entry.press ? 0 : (Button1Mask << (entry.button - 1));
        button.button = entry.button;
        button.same_screen = True;
        XSendEvent(m_x.display(), window, False, entry.press ? ButtonPressMask : ButtonReleaseMask, &event);
        return;
    }
}

void X11Input::sendKey(Window window, uint32_t message, uint8_t vk) {
    const KeyCode code = keycodeForPress(vk);
    if (code == 0) return;
    XEvent event{};
    XKeyEvent& key = event.xkey;
    key.type = message == kKeyDownMessage ? KeyPress : KeyRelease;
    key.display = m_x.display();
    key.window = window;
    key.root = m_x.root();
    key.subwindow = None;
    key.time = CurrentTime;
    key.state = 0;
    key.keycode = code;
    key.same_screen = True;
    XSendEvent(m_x.display(), window, False, message == kKeyDownMessage ? KeyPressMask : KeyReleaseMask, &event);
}

void X11Input::sendMessage(WindowId window, uint32_t message, uint32_t wParam, uint32_t lParam) {
    if (window == 0) return;
    if (message == kKeyDownMessage || message == kKeyUpMessage) sendKey(window, message, static_cast<uint8_t>(wParam));
    else sendButton(window, message, lParam);
    // A window that vanished makes an error that the connection counts
    // and drops.
    m_x.queued();
}

void X11Input::flush() { m_x.flush(); }

void X11Input::releaseAll() {
    for (unsigned button : m_heldButtons) fakeInput(XCB_BUTTON_RELEASE, static_cast<uint8_t>(button));
    m_heldButtons.clear();
    while (!m_heldKeys.empty()) pressKeycode(*m_heldKeys.begin(), false);
    m_vkCodes.clear();
    XSync(m_x.display(), False);
}

}  // namespace tarvoke::platform::x11
