#include "platform/x11/keystate.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>

#include <X11/keysym.h>

#include <X11/Xproto.h>
#include <X11/extensions/XInput2.h>

namespace tarvoke::platform::x11 {
namespace {

constexpr size_t kButtonBase = 256;
// How long a button event's place is waited for on the RECORD connection.
// The raw event comes at once, but a window manager's synchronous grab
// (click to focus) holds the event itself back until the manager lets it
// through, which on a busy machine takes a while.
constexpr std::chrono::milliseconds kRecordedWait{2000};
// Button events kept that no raw event has asked for (another device's).
constexpr size_t kRecordedKept = 256;

// The key table's questions answered from the map and one test of the
// table's entries (a keycode, or kButtonBase + a button).
template <typename Test> class TableView : public KeyboardView {
public:
    TableView(Keyboard& keyboard, Test test) : m_keyboard(keyboard), m_test(test) {}
    bool carriesKeysym(uint32_t keysym) const override { return !m_keyboard.keycodesOf(keysym).empty(); }
    bool keysymDown(uint32_t keysym) const override {
        for (KeyCode code : m_keyboard.keycodesOf(keysym))
            if (m_test(code)) return true;
        return false;
    }
    bool physicalDown(uint16_t evdevCode) const override {
        const KeyCode code = m_keyboard.keycodeOfEvdev(evdevCode);
        return code != 0 && m_test(code);
    }
    bool buttonDown(uint8_t button) const override { return m_test(kButtonBase + button); }

private:
    Keyboard& m_keyboard;
    Test m_test;
};

template <typename Test> std::unique_ptr<KeyboardView> makeView(Keyboard& keyboard, Test test) {
    return std::make_unique<TableView<Test>>(keyboard, test);
}

}  // namespace

X11KeyState::X11KeyState(Connection& connection, Keyboard& keyboard) : m_x(connection), m_keyboard(keyboard) {
    m_downView = makeView(keyboard, [this](size_t index) {
        if (index >= kButtonBase) return buttonDown(index);
        return index < m_down.size() && m_down[index];
    });
    m_pressedView = makeView(keyboard, [this](size_t index) {
        return index < m_lastPress.size() && m_lastPress[index] > m_since;
    });
    // The extension's number is asked through XCB, whose answer is read
    // after Xlib's own questions: one wait less at start.
    static constexpr char kName[] = "XInputExtension";
    const xcb_query_extension_cookie_t asked = xcb_query_extension(m_x.xcb(), sizeof kName - 1, kName);
    // 2.2: raw events come also while another client holds a grab.
    int major = 2, minor = 2;
    const bool versionOk = XIQueryVersion(m_x.display(), &major, &minor) == Success;
    xcb_query_extension_reply_t* extension = xcb_query_extension_reply(m_x.xcb(), asked, nullptr);
    m_x.noteXcbRead();
    const bool present = extension && extension->present;
    if (present) m_opcode = extension->major_opcode;
    std::free(extension);
    if (!present || !versionOk) return;
    findTestDevices();
    selectRawEvents(false);
    m_x.onEvent([this](XEvent& e) { onEvent(e); });
    // Keys already down at the start count as down, not as pressed.
    fillKeysFromServer();
    m_ok = true;
}

X11KeyState::~X11KeyState() { stopRecordingButtons(); }

void X11KeyState::selectRawEvents(bool withPointer) {
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(bits, XI_RawKeyPress);
    XISetMask(bits, XI_RawKeyRelease);
    // Buttons always, for the echoes of our clicks; motion, which comes in
    // floods, only for the recorder.
    XISetMask(bits, XI_RawButtonPress);
    XISetMask(bits, XI_RawButtonRelease);
    if (withPointer) XISetMask(bits, XI_RawMotion);
    XIEventMask mask{XIAllMasterDevices, sizeof bits, bits};
    XISelectEvents(m_x.display(), m_x.root(), &mask, 1);
}

void X11KeyState::followPointer() {
    if (!m_ok || m_followsPointer) return;
    // Selected before the buttons are read, so that no press falls between.
    selectRawEvents(true);
    fillButtonsFromServer();
    ++m_changes;
    m_followsPointer = true;
}

void X11KeyState::fillKeysFromServer() {
    char keys[32] = {};
    XQueryKeymap(m_x.display(), keys);
    for (size_t code = 0; code < 256; ++code) m_down[code] = (keys[code / 8] >> (code % 8)) & 1;
}

void X11KeyState::fillButtonsFromServer() {
    const unsigned mask = m_x.queryPointer().buttons;
    for (unsigned button = 1; button <= 5; ++button) m_down[kButtonBase + button] = mask & (Button1Mask << (button - 1));
}

// Without raw button events the table's buttons are as the server says now.
bool X11KeyState::buttonDown(size_t index) {
    if (index >= m_down.size()) return false;
    if (!m_followsPointer && m_ok) fillButtonsFromServer();
    return m_down[index];
}

void X11KeyState::onEvent(XEvent& event) {
    takeIn(event);
    const XGenericEventCookie& cookie = event.xcookie;
    if (event.type == GenericEvent && cookie.extension == m_opcode && cookie.evtype == XI_KeyPress && cookie.data) {
        // The press is all the claim takes (the key state has it from the raw
        // event): the keyboard grab it started ends at once, so that the keys
        // a stopped run lets go of still reach the window with the focus.
        const auto* press = static_cast<const XIDeviceEvent*>(cookie.data);
        XIUngrabDevice(m_x.display(), press->deviceid, press->time);
        m_x.flush();
    }
    // The moves of one read are one change, told when nothing more waits
    // behind them, or before the next press or release.
    if (m_motionPending && XQLength(m_x.display()) == 0) tellMotion();
}

void X11KeyState::takeIn(XEvent& event) {
    XGenericEventCookie& cookie = event.xcookie;
    if (event.type != GenericEvent || cookie.extension != m_opcode || !XGetEventData(m_x.display(), &cookie)) return;
    const auto* raw = static_cast<const XIRawEvent*>(cookie.data);
    size_t index = 0;
    bool press = false;
    switch (cookie.evtype) {
    case XI_RawKeyPress: index = raw->detail; press = true; break;
    case XI_RawKeyRelease: index = raw->detail; break;
    case XI_RawButtonPress: index = kButtonBase + raw->detail; press = true; break;
    case XI_RawButtonRelease: index = kButtonBase + raw->detail; break;
    case XI_RawMotion:
        ++m_motions;
        if (m_listener) {
            m_pointer.reset();
            m_motionPending = true;
            m_motionTime = static_cast<uint32_t>(raw->time);
        }
        return;
    default: return;
    }
    if (index >= m_down.size()) return;
    const bool test = std::find(m_testDevices.begin(), m_testDevices.end(), raw->sourceid) != m_testDevices.end();
    if (test) ++(index < kButtonBase ? m_keyEchoes : m_buttonEchoes);
    if (!test && index < kButtonBase && m_userDown[index] != press) {
        m_userDown[index] = press;
        m_userKeysDown += press ? 1 : -1;
    }
    // Without the recorder's interest, buttons are asked of the server.
    if (index >= kButtonBase && !m_followsPointer) return;
    const auto time = static_cast<uint32_t>(raw->time);
    std::optional<Point> here;
    if (m_listener) here = placeOfPress(time, press, index >= kButtonBase ? static_cast<unsigned>(raw->detail) : 0);
    m_down[index] = press;
    ++m_changes;
    if (press) m_lastPress[index] = ++m_presses;
    if (here) tell(InputChange{time, here});
}

// A copy runs, so that the listener may end the calls from inside.
void X11KeyState::tell(const InputChange& change) {
    if (!m_listener) return;
    const auto listener = m_listener;
    listener(change);
}

bool X11KeyState::onChange(std::function<void(const InputChange&)> listener) {
    if (!m_ok) return false;
    m_listener = std::move(listener);
    m_motionPending = false;
    m_pointer.reset();
    m_told.reset();
    if (m_listener) {
        startRecordingButtons();
        m_told = askPointer();
    } else {
        stopRecordingButtons();
    }
    return true;
}

Point X11KeyState::tellMotion() {
    m_motionPending = false;
    const Point at = askPointer();
    const Point here = m_pointer.value_or(at);
    m_told = here;
    tell(InputChange{m_motionTime, here});
    return here;
}

// The place of a press or release is the server's own, from RECORD. A
// place that no move told of was a warp: it is told as a move first, while
// the table is still as before the press, so that a recorder writes it
// before the click. Without RECORD the server is asked at each press and
// release, and its answer is the place unless the pointer moved between the
// two (a warp that comes between them is then taken as one before the press).
Point X11KeyState::placeOfPress(uint32_t time, bool press, unsigned button) {
    if (const std::optional<Point> recorded = button ? recordedPlace(press, button, time) : std::nullopt) {
        const Point here = *recorded;
        m_pointer = here;
        if (m_motionPending || m_told != here) {
            const uint32_t moved = m_motionPending ? m_motionTime : time;
            m_motionPending = false;
            m_told = here;
            tell(InputChange{moved, here});
        }
        return here;
    }
    // The answer asked for moves that came before holds for the press too:
    // the press was read before it was asked.
    if (m_motionPending) return tellMotion();
    const Point at = askPointer();
    // When it moved, the last answer known to hold is the better guess.
    const Point here = m_pointer.value_or(at);
    if (m_told != here) {
        m_told = here;
        tell(InputChange{time, here});
    }
    return here;
}

void X11KeyState::startRecordingButtons() {
    int major = 0, minor = 0;
    if (m_recordData || !XRecordQueryVersion(m_x.display(), &major, &minor)) return;
    Display* data = XOpenDisplay(DisplayString(m_x.display()));
    if (!data) return;
    XRecordRange* range = XRecordAllocRange();
    XRecordContext context = 0;
    if (range) {
        range->device_events.first = ButtonPress;
        range->device_events.last = ButtonRelease;
        XRecordClientSpec clients = XRecordAllClients;
        // Made before the other connection asks for its data.
        if (!m_x.checked([&] {
                context = XRecordCreateContext(m_x.display(), 0, &clients, 1, &range, 1);
                XSync(m_x.display(), False);
            }))
            context = 0;
        XFree(range);
    }
    if (context == 0 || !XRecordEnableContextAsync(data, context, onRecorded, reinterpret_cast<XPointer>(this))) {
        if (context != 0) XRecordFreeContext(m_x.display(), context);
        XCloseDisplay(data);
        return;
    }
    XFlush(data);
    m_recordData = data;
    m_recordContext = context;
}

void X11KeyState::stopRecordingButtons() {
    if (!m_recordData) return;
    XRecordDisableContext(m_x.display(), m_recordContext);
    XRecordFreeContext(m_x.display(), m_recordContext);
    XSync(m_x.display(), False);
    XCloseDisplay(m_recordData);
    m_recordData = nullptr;
    m_recordContext = 0;
    m_recordMissed = false;
    m_recorded.clear();
}

void X11KeyState::onRecorded(XPointer self, XRecordInterceptData* data) {
    auto& state = *reinterpret_cast<X11KeyState*>(self);
    if (data->category == XRecordFromServer && data->data_len * 4 >= sizeof(xEvent)) {
        const auto* event = reinterpret_cast<const xEvent*>(data->data);
        const int type = event->u.u.type & 0x7F;
        if (type == ButtonPress || type == ButtonRelease) {
            state.m_recorded.push_back({type == ButtonPress, event->u.u.detail,
                                        static_cast<uint32_t>(event->u.keyButtonPointer.time),
                                        Point{event->u.keyButtonPointer.rootX, event->u.keyButtonPointer.rootY}});
            if (state.m_recorded.size() > kRecordedKept) state.m_recorded.pop_front();
        }
    }
    XRecordFreeData(data);
}

std::optional<Point> X11KeyState::recordedPlace(bool press, unsigned button, uint32_t time) {
    if (!m_recordData) return std::nullopt;
    // After a miss, no more waiting until RECORD tells an event again.
    const auto deadline = std::chrono::steady_clock::now() + (m_recordMissed ? std::chrono::milliseconds(0) : kRecordedWait);
    for (;;) {
        XRecordProcessReplies(m_recordData);
        // Raw and recorded events come in the server's order: entries before
        // the match belong to events no raw event asks for.
        for (auto entry = m_recorded.begin(); entry != m_recorded.end(); ++entry) {
            if (entry->press != press || entry->button != button || entry->time != time) continue;
            const Point at = entry->at;
            m_recorded.erase(m_recorded.begin(), entry + 1);
            m_recordMissed = false;
            return at;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            m_recordMissed = true;
            return std::nullopt;
        }
        pollfd readable{ConnectionNumber(m_recordData), POLLIN, 0};
        ::poll(&readable, 1, static_cast<int>(left.count()) + 1);
    }
}

Point X11KeyState::askPointer() {
    const unsigned long request = NextRequest(m_x.display());
    const Connection::Pointer answer = m_x.queryPointer();
    const Point at{answer.x, answer.y};
    // Events carry the serial of the last request handled before them: a
    // raw motion read before the answer with a lower serial than the query
    // happened after the event in hand and before the answer.
    if (!motionReadBefore(request)) m_pointer = at;
    return at;
}

bool X11KeyState::motionReadBefore(unsigned long request) {
    struct Search {
        int opcode;
        unsigned long request;
        bool found;
    } search{m_opcode, request, false};
    XEvent unused;
    // The predicate never matches, so nothing leaves the queue; it only looks.
    XCheckIfEvent(
        m_x.display(), &unused,
        [](Display*, XEvent* event, XPointer arg) -> Bool {
            auto* s = reinterpret_cast<Search*>(arg);
            const XGenericEventCookie& cookie = event->xcookie;
            if (event->type == GenericEvent && cookie.extension == s->opcode && cookie.evtype == XI_RawMotion &&
                cookie.serial < s->request)
                s->found = true;
            return False;
        },
        reinterpret_cast<XPointer>(&search));
    return search.found;
}

bool X11KeyState::isDown(uint8_t vk) {
    // Without raw button events a button is asked of the server each time.
    if (!m_followsPointer) return isVirtualKeyDown(vk, *m_downView);
    if (m_answersChanges != m_changes || m_answersMap != m_keyboard.version()) {
        m_answers.fill(Answer::NotAsked);
        m_answersChanges = m_changes;
        m_answersMap = m_keyboard.version();
    }
    if (m_answers[vk] == Answer::NotAsked)
        m_answers[vk] = isVirtualKeyDown(vk, *m_downView) ? Answer::Down : Answer::Up;
    return m_answers[vk] == Answer::Down;
}

bool X11KeyState::pressedSinceLastRead(uint8_t vk) {
    m_since = m_lastRead[vk];
    const bool pressed = isVirtualKeyDown(vk, *m_pressedView);
    m_lastRead[vk] = m_presses;
    return pressed;
}

}  // namespace tarvoke::platform::x11

namespace tarvoke::platform::x11 {

// The server names the XTest slave of each master "<master> XTEST
// keyboard" and "<master> XTEST pointer".
void X11KeyState::findTestDevices() {
    int count = 0;
    XIDeviceInfo* devices = XIQueryDevice(m_x.display(), XIAllDevices, &count);
    for (int i = 0; i < count; ++i) {
        const char* name = devices[i].name;
        if (devices[i].use != XISlaveKeyboard && devices[i].use != XISlavePointer) continue;
        if (name && std::strstr(name, " XTEST ")) m_testDevices.push_back(devices[i].deviceid);
    }
    if (devices) XIFreeDeviceInfo(devices);
}

bool X11KeyState::userModifierDown() {
    if (m_userKeysDown <= 0) return false;
    static constexpr KeySym kModifiers[] = {XK_Shift_L,   XK_Shift_R, XK_Control_L, XK_Control_R,      XK_Alt_L,
                                            XK_Alt_R,     XK_Meta_L,  XK_Meta_R,    XK_Super_L,        XK_Super_R,
                                            XK_Hyper_L,   XK_Hyper_R, XK_ISO_Level3_Shift, XK_Mode_switch};
    for (KeySym keysym : kModifiers)
        for (KeyCode code : m_keyboard.keycodesOf(keysym))
            if (m_userDown[code]) return true;
    return false;
}

void X11KeyState::claimStopKey(bool claimed) {
    if (claimed == (m_stopKey != 0)) return;
    if (claimed) {
        const auto& codes = m_keyboard.keycodesOf(XK_0);
        if (codes.empty()) return;
        m_stopKey = codes.front();
    }
    // Ctrl with every combination of the other modifiers, which a passive
    // grab would otherwise have to match exactly: the locks (Caps Lock, Num
    // Lock), and a Shift, Alt or Super that the run or the user holds down.
    // One request takes them all; each combination costs the server time at
    // every start and end of a run, so the rarely held ones (Mod3, AltGr)
    // are left out.
    const unsigned others[] = {ShiftMask, LockMask, Mod1Mask, Mod2Mask, Mod4Mask};
    std::vector<XIGrabModifiers> combinations(size_t{1} << std::size(others));
    for (size_t combination = 0; combination < combinations.size(); ++combination) {
        combinations[combination].modifiers = ControlMask;
        for (size_t i = 0; i < std::size(others); ++i)
            if (combination & (size_t{1} << i)) combinations[combination].modifiers |= static_cast<int>(others[i]);
    }
    const int count = static_cast<int>(combinations.size());
    if (claimed) {
        unsigned char bits[XIMaskLen(XI_KeyPress)] = {};
        XISetMask(bits, XI_KeyPress);
        XIEventMask mask{XIAllMasterDevices, sizeof bits, bits};
        XIGrabKeycode(m_x.display(), XIAllMasterDevices, m_stopKey, m_x.root(), XIGrabModeAsync, XIGrabModeAsync,
                      False, &mask, count, combinations.data());
    } else {
        XIUngrabKeycode(m_x.display(), XIAllMasterDevices, m_stopKey, m_x.root(), count, combinations.data());
    }
    if (!claimed) m_stopKey = 0;
    m_x.flush();
}

}  // namespace tarvoke::platform::x11
