#pragma once
// Synthetic input: the input stream at the cursor, and messages to one window.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/types.h"

namespace tarvoke::platform {

// Button flags of a button event, as scripts and the recorder know them.
enum MouseFlags : uint32_t {
    kLeftDown = 2,
    kLeftUp = 4,
    kRightDown = 8,
    kRightUp = 16,
    kMiddleDown = 32,
    kMiddleUp = 64,
};

// Key event flags: 0 presses, 2 releases.
enum KeyFlags : uint32_t { kKeyPress = 0, kKeyRelease = 2 };

// One step of a parsed key string: press or release a virtual key, or type
// one character (a UTF-8 sequence) that may lie outside the keymap.
struct KeyStroke {
    enum class Kind { Press, Release, Type } kind = Kind::Press;
    uint8_t vk = 0;
    std::string text;
    bool operator==(const KeyStroke&) const = default;
};

// The strokes of one key string, handed out a piece at a time: a long text
// typed never exists as strokes all at once, which would take many times its
// own size.
class KeyStrokes {
public:
    virtual ~KeyStrokes() = default;
    // Replaces `piece` with the next strokes; false once none are left.
    virtual bool next(std::vector<KeyStroke>& piece) = 0;
};

// A cursor position asked for and not read yet.
class PendingPoint {
public:
    virtual ~PendingPoint() = default;
    // The position at the moment it was asked for; the first call may wait
    // for the answer.
    virtual Point get() = 0;
    // Whether both coordinates are sure to fit in 16 bits (the display's
    // are, by its protocol), so that a newer position may replace this one
    // unread.
    virtual bool fitsInt16() const { return false; }
};

// A position known at once.
class KnownPoint : public PendingPoint {
public:
    explicit KnownPoint(Point point) : m_point(point) {}
    Point get() override { return m_point; }

private:
    Point m_point;
};

class Input {
public:
    virtual ~Input() = default;
    virtual void setCursorPos(int32_t x, int32_t y) = 0;
    virtual Point cursorPos() = 0;
    // Asks where the cursor is without waiting for the answer, for a caller
    // that may not look at it for a while, or never: a click that notes its
    // position.
    virtual std::unique_ptr<PendingPoint> askCursorPos() { return std::make_unique<KnownPoint>(cursorPos()); }
    // A button event at the cursor; flags is one of MouseFlags.
    virtual void mouseEvent(uint32_t flags) = 0;
    // A press and its release at once (a click), which a platform may send
    // together, where a press alone stays down until a later operation.
    virtual void mouseClick(uint32_t downFlags, uint32_t upFlags) {
        mouseEvent(downFlags);
        mouseEvent(upFlags);
    }
    virtual void keyEvent(uint8_t vk, uint32_t flags) = 0;
    // A key string the host has already parsed; keys is the script's text.
    virtual void sendKeys(const std::string& keys, KeyStrokes& strokes) = 0;
    // A mouse or key message delivered to one window (513.. buttons, 256/257 keys):
    // key is a key message's virtual key, point a button message's position
    // (x in the low half, y in the high half, each signed).
    virtual void sendMessage(WindowId window, uint32_t message, uint32_t key, uint32_t point) = 0;
    // A platform may hold input back until the event loop's next turn, so
    // that a burst leaves at once; this sends what is held now. A caller
    // about to do something slow that is not input calls it first.
    virtual void flush() {}
    // Lets go of every key and button pressed here and not released.
    virtual void releaseAll() {}
};

}  // namespace tarvoke::platform
