#include "platform/x11/input.h"

#include <X11/XKBlib.h>
#include <X11/keysym.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <poll.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <thread>

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

bool X11Input::fakeInput(uint8_t type, uint8_t detail, int32_t x, int32_t y, bool echoes) {
    const Device device = type == XCB_KEY_PRESS || type == XCB_KEY_RELEASE ? kKeyboard : kPointer;
    if (m_lastDevice != kNoDevice && device != m_lastDevice) {
        awaitDelivery(m_lastDevice);
        if (device == kKeyboard && m_pressedSinceKeys) awaitFocus();
        m_pressedSinceKeys = false;
    }
    if (type == XCB_BUTTON_PRESS) m_pressedSinceKeys = true;
    if (type == XCB_KEY_PRESS && !awaitUserModifiers()) return false;
    m_lastDevice = device;
    // No root window: the one the pointer is on. Positions travel as 16-bit
    // numbers.
    xcb_test_fake_input(m_x.xcb(), type, detail, XCB_CURRENT_TIME, XCB_NONE, static_cast<int16_t>(x),
                        static_cast<int16_t>(y), 0);
    m_x.queued();
    if (echoes && device != kNoDevice) ++m_unconfirmed[device];
    if (type == XCB_BUTTON_PRESS) m_heldButtons.insert(detail);
    else if (type == XCB_BUTTON_RELEASE) m_heldButtons.erase(detail);
    // Never between a press and its release: a release that comes late to
    // a click the window manager holds can pass the click's replay, and the
    // button then stays down on the server. Right after the release is fine.
    const bool clickOpen = device == kPointer && !m_heldButtons.empty();
    if (!clickOpen && m_unconfirmed[device] >= 2 * kPaceEvents) awaitDelivery(device, kPaceEvents);
    return true;
}

void X11Input::turn() {
    m_clock.yield();
    m_x.drainEvents();
}

bool X11Input::turnUntil(const std::function<bool()>& done, std::optional<std::chrono::milliseconds> limit,
                         bool napping) {
    m_x.flush();
    const auto started = std::chrono::steady_clock::now();
    for (;;) {
        turn();
        if (done()) return true;
        if (stopped() || (limit && std::chrono::steady_clock::now() - started >= *limit)) return false;
        if (napping) {
            std::this_thread::sleep_for(kPaceNap);
            continue;
        }
        pollfd readable{ConnectionNumber(m_x.display()), POLLIN, 0};
        ::poll(&readable, 1, 1);
    }
}

void X11Input::awaitDelivery(Device device, uint64_t inFlight) {
    if (m_unconfirmed[device] > inFlight) {
        const auto echoes = [&] { return device == kKeyboard ? m_keys.keyEchoes() : m_keys.buttonEchoes(); };
        const uint64_t target = m_echoBase[device] + m_unconfirmed[device] - inFlight;
        const bool caughtUp = turnUntil([&] { return echoes() >= target; }, kHeldBack, inFlight > 0);
        // Caught up to what may stay on its way: that stays counted, the
        // rest is through, and the next wait comes after as many again.
        if (caughtUp && inFlight > 0) {
            m_echoBase[device] = target;
            m_unconfirmed[device] = inFlight;
            return;
        }
        // Counted from here on: an echo that comes after the deadline, or
        // one of another program's XTest input, puts the next wait short by
        // as much, never makes it wait in vain.
        m_echoBase[device] = echoes();
        m_unconfirmed[device] = 0;
    }
    if (device == kPointer && m_unconfirmed[kPointer] == 0) m_moveBehindClick = false;
}

// Some window managers (fluxbox among them) let a click through at once and
// focus the window when they handle it, a moment later.
void X11Input::awaitFocus() {
    Display* display = m_x.display();
    Window root = None, clicked = None, focus = None;
    int rootX = 0, rootY = 0, x = 0, y = 0, revert = 0;
    unsigned mask = 0;
    XQueryPointer(display, m_x.root(), &root, &clicked, &rootX, &rootY, &x, &y, &mask);
    if (clicked == None) return;
    // A menu or another override-redirect window never takes the focus.
    XWindowAttributes attributes{};
    if (!XGetWindowAttributes(display, clicked, &attributes) || attributes.override_redirect) return;
    const auto topLevelOf = [&](Window window) {
        for (int depth = 0; window != None && window != PointerRoot && depth < 64; ++depth) {
            Window treeRoot = None, parent = None, *children = nullptr;
            unsigned count = 0;
            if (!XQueryTree(display, window, &treeRoot, &parent, &children, &count)) return Window{None};
            if (children) XFree(children);
            if (parent == treeRoot) return window;
            window = parent;
        }
        return window;
    };
    turnUntil(
        [&] {
            XGetInputFocus(display, &focus, &revert);
            return focus == PointerRoot || topLevelOf(focus) == clicked;
        },
        kHeldBack);
}

bool X11Input::awaitUserModifiers() {
    if (!m_keys.userModifierDown()) return true;
    return turnUntil([&] { return !m_keys.userModifierDown(); }, std::nullopt) && !stopped();
}

void X11Input::setCursorPos(int32_t x, int32_t y) {
    beginOperation();
    // Clamped before the 16-bit fields, so that a far position ends at the
    // edge instead of wrapping round.
    const int screen = DefaultScreen(m_x.display());
    x = std::clamp<int32_t>(x, 0, std::max(DisplayWidth(m_x.display(), screen) - 1, 0));
    y = std::clamp<int32_t>(y, 0, std::max(DisplayHeight(m_x.display(), screen) - 1, 0));
    // A button event that the window manager holds back (a click it takes
    // with a synchronous grab) goes out when the manager lets it through,
    // at the place the pointer has then: a move elsewhere waits for the
    // pointer's events before it. Never inside a click (see fakeInput),
    // where the release belongs at the end of the drag anyway.
    const Point to{x, y};
    if (m_heldButtons.empty() && m_lastMove != to) awaitDelivery(kPointer);
    m_lastMove = to;
    // A move behind a click still held back is held with it, and the
    // server reports the old position until both are through: the next
    // cursor question waits for the click.
    if (m_unconfirmed[kPointer] > 0) m_moveBehindClick = true;
    fakeInput(XCB_MOTION_NOTIFY, 0, x, y, false);
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
    if (m_moveBehindClick) awaitDelivery(kPointer);
    const Connection::Pointer pointer = m_x.queryPointer();
    m_cursor = Point{pointer.x, pointer.y};
    return *m_cursor;
}

std::unique_ptr<PendingPoint> X11Input::askCursorPos() {
    // Goes out with the next flush, ahead of what is queued after it. The
    // clicks of one burst share it while no move of ours lies between them.
    if (!m_burstQuery || m_burstQueryFlushes != m_x.flushes()) {
        if (m_moveBehindClick) awaitDelivery(kPointer);
        m_burstQuery = std::make_shared<PointerQuery>(m_x, m_x.root());
        m_burstQueryFlushes = m_x.flushes();
    }
    return std::make_unique<SharedPointerQuery>(m_burstQuery);
}

void X11Input::mouseEvent(uint32_t flags) {
    beginOperation();
    buttonEvent(flags, true);
}

void X11Input::mouseClick(uint32_t downFlags, uint32_t upFlags) {
    beginOperation();
    buttonEvent(downFlags, false);
    buttonEvent(upFlags, false);
}

void X11Input::buttonEvent(uint32_t flags, bool alone) {
    for (const ButtonFlag& entry : kButtonFlags) {
        if (entry.flag != flags) continue;
        // A window manager's synchronous grab freezes the core pointer, but
        // not the XTest device under it, which goes on taking our events.
        // When the manager lets its click through, the server hands the
        // core pointer what it held back, and drops a release of a button
        // that the XTest device has down again by then (and so every press
        // of it after, until the XTest device lets go): a press left down
        // past this operation (a pause, a turn of the loop before its
        // release) would eat the held clicks before it. So it leaves once
        // they are through. A click's press and release leave in one write,
        // which the server takes in at once.
        if (alone && entry.press) awaitDelivery(kPointer);
        const bool echoes = entry.press || m_heldButtons.count(entry.button) > 0;
        fakeInput(entry.press ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, static_cast<uint8_t>(entry.button), 0, 0, echoes);
        return;
    }
}

KeySym X11Input::keysymOf(uint8_t vk) {
    const KeyMeaning& meaning = keyMeaning(vk);
    return meaning.kind == KeyKind::Keysym ? effectiveKeysym(meaning, m_mapView) : NoSymbol;
}

KeyCode X11Input::keycodeForPress(uint8_t vk) {
    const KeyMeaning& meaning = keyMeaning(vk);
    if (meaning.kind == KeyKind::Physical) return m_keyboard.keycodeOfEvdev(meaning.evdevCode);
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
    const bool echoes = press || m_heldKeys.count(code) > 0;
    if (!fakeInput(press ? XCB_KEY_PRESS : XCB_KEY_RELEASE, code, 0, 0, echoes)) return;
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
    beginOperation();
    pressVk(vk, flags != kKeyRelease);
}

void X11Input::typeKeysym(KeySym keysym) {
    const auto typing = m_keyboard.typingOf(keysym);
    if (!typing) return;
    // The level's modifiers (Shift, AltGr ...) around the key, unless the
    // script holds them already.
    std::vector<KeyCode> modifiers;
    for (unsigned bit = ShiftMask; bit <= Mod5Mask; bit <<= 1) {
        if (!(typing->mods & bit)) continue;
        const KeyCode code = m_keyboard.modifierKeycode(bit);
        if (code != 0 && m_heldKeys.count(code) == 0) modifiers.push_back(code);
    }
    for (KeyCode code : modifiers) pressKeycode(code, true);
    pressKeycode(typing->code, true);
    pressKeycode(typing->code, false);
    for (auto it = modifiers.rbegin(); it != modifiers.rend(); ++it) pressKeycode(*it, false);
}

void X11Input::sendKeys(const std::string&, KeyStrokes& strokes) {
    beginOperation();
    std::vector<KeyStroke> piece;
    // A stop ends the typing at once; what is held is let go by the run's end.
    while (!stopped() && strokes.next(piece)) sendStrokes(piece);
}

void X11Input::sendStrokes(const std::vector<KeyStroke>& strokes) {
    // Characters that no key of the group in force carries get a spare
    // keycode; the others are typed with their level's modifiers.
    std::vector<KeySym> needed, typed;
    for (const KeyStroke& stroke : strokes) {
        if (stroke.kind == KeyStroke::Kind::Type) {
            const KeySym keysym = keysymOfCharacter(stroke.text);
            if (!m_keyboard.typingOf(keysym)) typed.push_back(keysym);
        } else if (const KeySym keysym = keysymOf(stroke.vk); keysym != NoSymbol) {
            needed.push_back(keysym);
        }
    }
    m_keyboard.bindSpares(needed);
    m_keyboard.bindSpares(typed, true);
    for (const KeyStroke& stroke : strokes) {
        if (stopped()) return;
        switch (stroke.kind) {
        case KeyStroke::Kind::Press: pressVk(stroke.vk, true); break;
        case KeyStroke::Kind::Release: pressVk(stroke.vk, false); break;
        case KeyStroke::Kind::Type: typeKeysym(keysymOfCharacter(stroke.text)); break;
        }
    }
}

void X11Input::sendButton(Window window, uint32_t message, uint32_t point) {
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
        button.x = static_cast<int16_t>(point & 0xFFFF);
        button.y = static_cast<int16_t>(point >> 16);
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

void X11Input::sendMessage(WindowId window, uint32_t message, uint32_t key, uint32_t point) {
    if (window == 0) return;
    if (message == kKeyDownMessage || message == kKeyUpMessage) sendKey(window, message, static_cast<uint8_t>(key));
    else sendButton(window, message, point);
    // A window that vanished makes an error that the connection counts
    // and drops.
    m_x.queued();
}

void X11Input::flush() { m_x.flush(); }

void X11Input::releaseAll() {
    // Lets go also after a stop, and while the user holds a modifier.
    beginOperation();
    while (!m_heldButtons.empty()) fakeInput(XCB_BUTTON_RELEASE, static_cast<uint8_t>(*m_heldButtons.begin()));
    while (!m_heldKeys.empty()) pressKeycode(*m_heldKeys.begin(), false);
    m_vkCodes.clear();
    XSync(m_x.display(), False);
}

}  // namespace tarvoke::platform::x11
