#pragma once
// Synthetic input on X: the input stream through XTest (on the connection's
// XCB side), and messages to one window as sent events (which programs that
// refuse sent events ignore).
//
// Every operation queues its requests and leaves them in the connection's
// buffer, which goes out at the next turn of the event loop or at flush(),
// so that a burst of clicks leaves in one write.
//
// Order across devices: a window manager takes a click on an unfocused
// window with a synchronous grab, freezing the pointer until it has raised
// and focused the window, while key events pass it; a keyboard grab does
// the same the other way round. So before an event of the other device
// leaves, the earlier ones must have come through: the XInput 2 raw event
// that the server delivers for each of them, which a frozen master device
// holds back too, is waited for (at most kHeldBack); and after a click, until
// the clicked window has the focus, for window managers that focus it only
// after letting the click through. Events of one device
// in a row stay in one write, except that once twice kPaceEvents of them
// are on their way (never inside a click), the same wait lets the server
// catch up to kPaceEvents: what is in flight stays small, so that a stop
// ends input at once, and the server is never left without work; and a
// button pressed alone, not as half of a click, waits for the pointer's
// earlier events (see buttonEvent).
// While the user holds a modifier on a real keyboard, key events wait: the
// user's shortcut must not turn the script's letters into shortcuts. Only keysyms needing a
// spare keycode are bound in one batch and synced first: at most one round
// trip per operation. Cursor queries go through the XCB side too, whose
// answers can be read later.

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "platform/keytable.h"
#include "platform/input.h"
#include "platform/x11/clock.h"
#include "platform/x11/connection.h"
#include "platform/x11/keyboard.h"
#include "platform/x11/keystate.h"

namespace tarvoke::platform::x11 {

class PointerQuery;

class X11Input : public Input {
public:
    static constexpr std::chrono::milliseconds kWarpCheck{25};
    static constexpr std::chrono::milliseconds kHeldBack{200};
    static constexpr int kPaceEvents = 32;
    // How long a paced flood rests between looks at the echoes. Waking at
    // each echo takes the processor from the server and the window manager
    // that must let the flood through (under openbox a flood of clicks went
    // a fifth slower on two cores); kPaceEvents still on their way are more
    // than a nap's worth of the server's work.
    static constexpr std::chrono::microseconds kPaceNap{200};

    // The key state answers which keysyms the map carries (for the key
    // table's fallbacks) and counts the pointer's moves.
    // The clock gives the event loop its turns while input waits, and tells
    // of a stop (its waits are cancelled), which ends the operation.
    X11Input(Connection& connection, Keyboard& keyboard, X11KeyState& keys, RealClock& clock)
        : m_x(connection), m_keyboard(keyboard), m_keys(keys), m_mapView(keys.view()), m_clock(clock) {}
    void setCursorPos(int32_t x, int32_t y) override;
    // While the key state follows the pointer, asks the server only after
    // the pointer has moved, and at least every kWarpCheck, since another
    // program's warp makes no move event: the recorder reads this every
    // millisecond.
    Point cursorPos() override;
    std::unique_ptr<PendingPoint> askCursorPos() override;
    // A press alone first waits for the pointer's earlier events (see
    // buttonEvent); a click's press and release leave together.
    void mouseEvent(uint32_t flags) override;
    void mouseClick(uint32_t downFlags, uint32_t upFlags) override;
    void keyEvent(uint8_t vk, uint32_t flags) override;
    void sendKeys(const std::string& keys, KeyStrokes& strokes) override;
    void sendMessage(WindowId window, uint32_t message, uint32_t key, uint32_t point) override;

    void flush() override;
    void releaseAll() override;

private:
    // The keysym a press of vk stands for; 0 for a physical key or none.
    KeySym keysymOf(uint8_t vk);
    KeyCode keycodeForPress(uint8_t vk);
    void pressKeycode(KeyCode code, bool press);
    void pressVk(uint8_t vk, bool press);
    void typeKeysym(KeySym keysym);
    // One piece of a key string, with spare keycodes bound for what it types.
    void sendStrokes(const std::vector<KeyStroke>& strokes);
    // One button event of MouseFlags; alone: not one half of a click
    // (mouseClick), so a press stays down past the operation.
    void buttonEvent(uint32_t flags, bool alone);
    enum Device { kKeyboard, kPointer, kNoDevice };
    // Queues one XTest event (XCB_KEY_PRESS ... XCB_MOTION_NOTIFY) for the
    // connection's next flush, after the waits that keep the order; echoes
    // tells whether the server will make a raw event of it (a release of
    // what is not down makes none). False when a stop dropped it.
    bool fakeInput(uint8_t type, uint8_t detail, int32_t x = 0, int32_t y = 0, bool echoes = true);
    // Waits until the raw events of the device's events sent so far have
    // come back, all but the last `inFlight`, at most kHeldBack, or a stop.
    void awaitDelivery(Device device, uint64_t inFlight = 0);
    // After a button press, waits until the top-level window under the
    // pointer has the focus, at most kHeldBack: the window manager may
    // focus it only after the click has come through.
    void awaitFocus();
    // Waits while a modifier is down on a real keyboard; false on a stop.
    // Only presses wait: a release types nothing.
    bool awaitUserModifiers();
    // One turn of the event loop and a look at the server's events.
    void turn();
    // Turns the event loop, watching the X connection, until done answers
    // true (true), or the run stops or limit passes (false). Napping, it
    // looks every kPaceNap instead of at each event that comes in.
    bool turnUntil(const std::function<bool()>& done, std::optional<std::chrono::milliseconds> limit,
                   bool napping = false);
    void beginOperation() { m_operationCancels = m_clock.cancels(); }
    bool stopped() const { return m_clock.cancels() != m_operationCancels; }
    void sendButton(Window window, uint32_t message, uint32_t point);
    void sendKey(Window window, uint32_t message, uint8_t vk);

    Connection& m_x;
    Keyboard& m_keyboard;
    X11KeyState& m_keys;
    const KeyboardView& m_mapView;
    RealClock& m_clock;
    uint64_t m_operationCancels = 0;
    Device m_lastDevice = kNoDevice;
    // Per device, the echoes counted when it was last waited for and the
    // events sent since that will make one.
    uint64_t m_echoBase[2] = {0, 0};
    uint64_t m_unconfirmed[2] = {0, 0};
    bool m_moveBehindClick = false;
    std::optional<Point> m_lastMove;  // where the last move of ours went
    bool m_pressedSinceKeys = false;
    // The cursor as last asked, the move count and the time of asking.
    std::optional<Point> m_cursor;
    uint64_t m_cursorMotions = 0;
    std::chrono::steady_clock::time_point m_cursorAsked;
    // The cursor query of the clicks still in the buffer, and the flush
    // count when it was asked.
    std::shared_ptr<PointerQuery> m_burstQuery;
    unsigned long m_burstQueryFlushes = 0;
    std::map<uint8_t, KeyCode> m_vkCodes;  // the keycode each pressed number went to
    std::multiset<KeyCode> m_heldKeys;
    std::set<unsigned> m_heldButtons;
};

// The keysym that types one UTF-8 character; NoSymbol for an invalid sequence.
KeySym keysymOfCharacter(const std::string& character);

}  // namespace tarvoke::platform::x11
