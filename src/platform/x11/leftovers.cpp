#include "platform/x11/leftovers.h"

#include <X11/Xatom.h>
#include <X11/extensions/XInput.h>
#include <X11/extensions/XI.h>
#include <xcb/xtest.h>

#include <cstring>

namespace tarvoke::platform::x11 {
namespace {

constexpr const char* kSpareProperty = "_TARVOKE_SPARE_KEYCODES";

// An entry of the list: owner window, keycode, keysym.
struct Entry {
    unsigned long owner = 0;
    unsigned long keycode = 0;
    unsigned long keysym = 0;
};

std::vector<Entry> readEntries(Connection& x) {
    std::vector<Entry> entries;
    const auto items = x.cardinals(x.root(), x.atom(kSpareProperty), XA_CARDINAL);
    if (!items) return entries;
    for (size_t i = 0; i + 2 < items->size(); i += 3) entries.push_back({(*items)[i], (*items)[i + 1], (*items)[i + 2]});
    return entries;
}

void writeEntries(Connection& x, const std::vector<Entry>& entries) {
    const Atom property = x.atom(kSpareProperty);
    if (entries.empty()) {
        XDeleteProperty(x.display(), x.root(), property);
        return;
    }
    // Xlib takes 32-bit items as longs.
    std::vector<long> items;
    for (const Entry& entry : entries)
        for (unsigned long value : {entry.owner, entry.keycode, entry.keysym}) items.push_back(static_cast<long>(value));
    XChangeProperty(x.display(), x.root(), property, XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(items.data()), static_cast<int>(items.size()));
}

bool windowExists(Connection& x, Window window) {
    XWindowAttributes attributes;
    bool found = false;
    const bool answered = x.checked([&] { found = XGetWindowAttributes(x.display(), window, &attributes) != 0; });
    return answered && found;
}

// Frees keycode when its first level still carries keysym.
void unbindIfStill(Connection& x, KeyCode keycode, KeySym keysym) {
    int min = 0, max = 0;
    XDisplayKeycodes(x.display(), &min, &max);
    if (keycode < min || keycode > max) return;
    int per = 0;
    KeySym* row = XGetKeyboardMapping(x.display(), keycode, 1, &per);
    const bool ours = row && per > 0 && row[0] == keysym;
    if (row) XFree(row);
    if (!ours) return;
    std::vector<KeySym> none(static_cast<size_t>(per), NoSymbol);
    XChangeKeyboardMapping(x.display(), keycode, per, none.data(), 1);
}

void unbindSparesOfGoneProcesses(Connection& x) {
    XGrabServer(x.display());
    std::vector<Entry> entries = readEntries(x);
    std::vector<Entry> alive;
    for (const Entry& entry : entries) {
        if (windowExists(x, static_cast<Window>(entry.owner))) alive.push_back(entry);
        else unbindIfStill(x, static_cast<KeyCode>(entry.keycode), static_cast<KeySym>(entry.keysym));
    }
    if (alive.size() != entries.size()) writeEntries(x, alive);
    XUngrabServer(x.display());
    XSync(x.display(), False);
}

// Sends a release for every key and button down on the XTest devices,
// whose state outlives the client that pressed them.
void releaseXTestDevices(Connection& x) {
    int count = 0;
    XDeviceInfo* devices = XListInputDevices(x.display(), &count);
    if (!devices) return;
    bool sent = false;
    for (int i = 0; i < count; ++i) {
        const XDeviceInfo& info = devices[i];
        if (!info.name || !std::strstr(info.name, "XTEST")) continue;
        if (info.use != IsXExtensionKeyboard && info.use != IsXExtensionPointer) continue;
        XDevice* device = nullptr;
        if (!x.checked([&] { device = XOpenDevice(x.display(), info.id); }) || !device) continue;
        XDeviceState* state = nullptr;
        x.checked([&] { state = XQueryDeviceState(x.display(), device); });
        if (state) {
            auto* item = state->data;
            for (int k = 0; k < state->num_classes; ++k) {
                if (item->c_class == KeyClass) {
                    const auto* keys = reinterpret_cast<const XKeyState*>(item);
                    for (int code = 8; code < 256 && code < keys->num_keys + 8; ++code)
                        if (keys->keys[code / 8] & (1 << (code % 8))) {
                            xcb_test_fake_input(x.xcb(), XCB_KEY_RELEASE, static_cast<uint8_t>(code), XCB_CURRENT_TIME,
                                                XCB_NONE, 0, 0, 0);
                            sent = true;
                        }
                } else if (item->c_class == ButtonClass) {
                    const auto* buttons = reinterpret_cast<const XButtonState*>(item);
                    for (int button = 1; button < 256 && button <= buttons->num_buttons; ++button)
                        if (buttons->buttons[button / 8] & (1 << (button % 8))) {
                            xcb_test_fake_input(x.xcb(), XCB_BUTTON_RELEASE, static_cast<uint8_t>(button),
                                                XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
                            sent = true;
                        }
                }
                item = reinterpret_cast<XInputClass*>(reinterpret_cast<char*>(item) + item->length);
            }
            XFreeDeviceState(state);
        }
        XCloseDevice(x.display(), device);
    }
    XFreeDeviceList(devices);
    if (sent) XSync(x.display(), False);
}

}  // namespace

void cleanUpAfterKilledRuns(Connection& x) {
    releaseXTestDevices(x);
    unbindSparesOfGoneProcesses(x);
}

SpareKeycodeRecord::SpareKeycodeRecord(Connection& connection) : m_x(connection) {}

SpareKeycodeRecord::~SpareKeycodeRecord() {
    if (m_owner) XDestroyWindow(m_x.display(), m_owner);
}

void SpareKeycodeRecord::publish(const std::vector<std::pair<KeyCode, KeySym>>& bindings) {
    if (bindings.empty() && !m_published) return;
    // A window that lives exactly as long as this connection: the mark of
    // whether the entries' process is still there.
    if (!m_owner) {
        XSetWindowAttributes attributes{};
        m_owner = XCreateWindow(m_x.display(), m_x.root(), -1, -1, 1, 1, 0, 0, InputOnly, CopyFromParent, 0,
                                &attributes);
    }
    XGrabServer(m_x.display());
    std::vector<Entry> entries;
    for (const Entry& entry : readEntries(m_x))
        if (entry.owner != m_owner) entries.push_back(entry);
    for (const auto& [keycode, keysym] : bindings) entries.push_back({m_owner, keycode, keysym});
    writeEntries(m_x, entries);
    XUngrabServer(m_x.display());
    m_published = !bindings.empty();
}

}  // namespace tarvoke::platform::x11
