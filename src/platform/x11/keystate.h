#pragma once
// Key and button state from XInput 2 raw events on the root window, kept in
// a local table: a read looks at the table after taking in the events that
// have arrived, and never waits for the server. Buttons and motion are
// followed only for the recorder (a run would wake for every move of the
// mouse); raw motion is counted, so that the cursor need not be asked for
// while it stands still. Which keys make a number
// down is the key table's rule (isVirtualKeyDown).

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <vector>
#include <optional>

#include "platform/keytable.h"
#include "platform/keystate.h"
#include "platform/x11/connection.h"
#include "platform/x11/keyboard.h"

#include <X11/Xlib.h>
#include <X11/extensions/record.h>

namespace tarvoke::platform::x11 {

class X11KeyState : public KeyState {
public:
    X11KeyState(Connection& connection, Keyboard& keyboard);
    ~X11KeyState() override;
    // False when the server lacks XInput 2: every key then reads as up.
    bool ok() const { return m_ok; }

    bool isDown(uint8_t vk) override;
    bool pressedSinceLastRead(uint8_t vk) override;
    void followPointer() override;
    bool followsPointer() const { return m_followsPointer; }
    // The keyboard map and the keys down, as the key table asks about them.
    const KeyboardView& view() const { return *m_downView; }
    // Counts the pointer's moves by any device, ours included, while the
    // pointer is followed; a warp by another program is not among them.
    uint64_t motions() const { return m_motions; }

    // Raw events of the XTest devices (our input, and any other tool's) as
    // the server has delivered them to the master devices: a master frozen
    // by a window manager's synchronous grab delivers them only once it
    // thaws, so an echo tells that every earlier event of that device is
    // through.
    uint64_t keyEchoes() const { return m_keyEchoes; }
    uint64_t buttonEchoes() const { return m_buttonEchoes; }
    // A modifier (Shift, Ctrl, Alt, Super, AltGr) held down on a real
    // keyboard, not by XTest: the user is typing a shortcut.
    bool userModifierDown();
    // Takes Ctrl+0 with a passive grab on the root window, so that the stop
    // key reaches no application while a run is active; false lets it go.
    void claimStopKey(bool claimed) override;
    // The devices whose events are ours (the XTest slaves); a test without a
    // second keyboard takes them out to play the user with XTest.
    std::vector<int>& testDevices() { return m_testDevices; }
    // Each raw press, release and move, told as it is taken in, with where
    // the pointer was at it; the moves of one read come as one change, told
    // before the next press or release.
    bool onChange(std::function<void(const InputChange&)> listener) override;

private:
    void onEvent(XEvent& event);
    void takeIn(XEvent& event);
    // Raw key events, and with the pointer raw button and motion events.
    void selectRawEvents(bool withPointer);
    void fillKeysFromServer();
    void fillButtonsFromServer();
    bool buttonDown(size_t index);
    void findTestDevices();

    // For the listener of changes.
    void tell(const InputChange& change);
    Point tellMotion();
    // Where the pointer was at a press or release (button 0: a key's).
    Point placeOfPress(uint32_t time, bool press, unsigned button);
    // Asks where the pointer is now; the answer holds for the event in hand
    // too when no raw motion came between it and the answer.
    Point askPointer();
    bool motionReadBefore(unsigned long request);

    Connection& m_x;
    Keyboard& m_keyboard;
    // Views of the table: keys down now, and keys pressed after m_since.
    std::unique_ptr<KeyboardView> m_downView;
    std::unique_ptr<KeyboardView> m_pressedView;
    uint64_t m_since = 0;
    bool m_ok = false;
    bool m_followsPointer = false;
    int m_opcode = 0;
    // Keycodes 0..255, then buttons 256 + 1..31: down now, and the number of
    // the last press of each (presses are counted from 1).
    std::array<bool, 288> m_down{};
    std::array<uint64_t, 288> m_lastPress{};
    uint64_t m_presses = 0;
    uint64_t m_motions = 0;
    // Per virtual key, the press count at its last "pressed since" read.
    std::array<uint64_t, 256> m_lastRead{};
    // Answers of isDown while the pointer is followed, kept until a key or
    // button changes or the map does (the recorder asks about every number
    // every millisecond).
    enum class Answer : uint8_t { NotAsked, Up, Down };
    std::array<Answer, 256> m_answers{};
    uint64_t m_changes = 0;
    uint64_t m_answersChanges = 0;
    uint64_t m_answersMap = 0;
    // The XTest slave devices, and the keycodes down on the other ones.
    std::vector<int> m_testDevices;
    std::array<bool, 256> m_userDown{};
    int m_userKeysDown = 0;
    uint64_t m_keyEchoes = 0;
    uint64_t m_buttonEchoes = 0;
    KeyCode m_stopKey = 0;

    // Raw events carry no position, and a warp by another program makes
    // none: while the listener listens, the RECORD extension tells each
    // button event as the server took it in, with where the pointer was,
    // on a connection of its own.
    struct RecordedButton {
        bool press;
        unsigned button;
        uint32_t time;
        Point at;
    };
    void startRecordingButtons();
    void stopRecordingButtons();
    static void onRecorded(XPointer self, XRecordInterceptData* data);
    // The place of the button event of that kind and time, once RECORD has
    // told it (waited for); nullopt without RECORD.
    std::optional<Point> recordedPlace(bool press, unsigned button, uint32_t time);
    Display* m_recordData = nullptr;
    XRecordContext m_recordContext = 0;
    bool m_recordMissed = false;
    std::deque<RecordedButton> m_recorded;

    std::function<void(const InputChange&)> m_listener;
    bool m_motionPending = false;
    uint32_t m_motionTime = 0;
    // Where the pointer is as of the event in hand, when an answer of the
    // server is known to hold there: forgotten at each raw motion.
    std::optional<Point> m_pointer;
    // The place of the last change told.
    std::optional<Point> m_told;
};

}  // namespace tarvoke::platform::x11
