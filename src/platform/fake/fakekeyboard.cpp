#include "platform/fake/fakekeyboard.h"

namespace tarvoke::platform::fake {
namespace {

constexpr uint8_t kEvdevOffset = 8;
// Letters in the order of the US rows, starting at the keycodes of q, a and z.
constexpr std::string_view kTopRow = "qwertyuiop", kMiddleRow = "asdfghjkl", kBottomRow = "zxcvbnm";

}  // namespace

FakeKeyboard FakeKeyboard::us() {
    FakeKeyboard keyboard;
    keyboard.setKey(10, {'1', '!'});
    for (uint8_t i = 1; i < 9; ++i) keyboard.setKey(10 + i, {static_cast<uint32_t>('1' + i)});
    keyboard.setKey(19, {'0', ')'});
    for (size_t i = 0; i < kTopRow.size(); ++i) keyboard.setKey(24 + i, {static_cast<uint32_t>(kTopRow[i])});
    for (size_t i = 0; i < kMiddleRow.size(); ++i) keyboard.setKey(38 + i, {static_cast<uint32_t>(kMiddleRow[i])});
    for (size_t i = 0; i < kBottomRow.size(); ++i) keyboard.setKey(52 + i, {static_cast<uint32_t>(kBottomRow[i])});
    keyboard.setKey(50, {0xffe1});
    keyboard.setKey(62, {0xffe2});
    keyboard.setKey(37, {0xffe3});
    keyboard.setKey(105, {0xffe4});
    keyboard.setKey(64, {0xffe9, 0xffe7});  // Alt_L, Meta_L
    keyboard.setKey(108, {0xffea, 0xffe8});  // Alt_R, Meta_R
    keyboard.setKey(39 + kEvdevOffset, {';', ':'});
    keyboard.setKey(13 + kEvdevOffset, {'=', '+'});
    keyboard.setKey(51 + kEvdevOffset, {',', '<'});
    keyboard.setKey(12 + kEvdevOffset, {'-', '_'});
    keyboard.setKey(52 + kEvdevOffset, {'.', '>'});
    keyboard.setKey(53 + kEvdevOffset, {'/', '?'});
    keyboard.setKey(41 + kEvdevOffset, {'`', '~'});
    keyboard.setKey(26 + kEvdevOffset, {'[', '{'});
    keyboard.setKey(43 + kEvdevOffset, {'\\', '|'});
    keyboard.setKey(27 + kEvdevOffset, {']', '}'});
    keyboard.setKey(40 + kEvdevOffset, {'\'', '"'});
    keyboard.setKey(86 + kEvdevOffset, {'<', '>'});

    // Every other keysym of the table on a free keycode of its own.
    uint8_t next = 120;
    for (int vk = 0; vk < 256; ++vk) {
        const KeyMeaning& meaning = keyMeaning(static_cast<uint8_t>(vk));
        if (meaning.kind != KeyKind::Keysym || keyboard.carriesKeysym(meaning.keysym)) continue;
        while (keyboard.m_map.count(next)) ++next;
        keyboard.setKey(next, {meaning.keysym});
    }
    return keyboard;
}

FakeKeyboard FakeKeyboard::azerty() {
    FakeKeyboard keyboard = us();
    keyboard.setKey(10, {'&', '1'});
    keyboard.setKey(11, {0xe9, '2'});
    keyboard.setKey(108, {0xfe03});  // ISO_Level3_Shift, no Alt_R anywhere
    return keyboard;
}

void FakeKeyboard::releaseAll() {
    m_keycodesDown.fill(false);
    m_buttonsDown.fill(false);
}

uint8_t FakeKeyboard::keycodeCarrying(uint32_t keysym) const {
    for (const auto& [keycode, keysyms] : m_map)
        for (uint32_t carried : keysyms)
            if (carried == keysym) return keycode;
    return 0;
}

uint8_t FakeKeyboard::keycodeFor(uint8_t vk) const {
    const KeyMeaning& meaning = keyMeaning(vk);
    if (meaning.kind == KeyKind::Keysym) return keycodeCarrying(effectiveKeysym(meaning, *this));
    if (meaning.kind == KeyKind::Physical) return static_cast<uint8_t>(meaning.evdevCode + kEvdevOffset);
    return 0;
}

void FakeKeyboard::pressVirtualKey(uint8_t vk, bool down) {
    const KeyMeaning& meaning = keyMeaning(vk);
    if (meaning.kind == KeyKind::Button) {
        m_buttonsDown[meaning.button] = down;
        return;
    }
    if (const uint8_t keycode = keycodeFor(vk)) m_keycodesDown[keycode] = down;
}

void FakeKeyboard::change(uint8_t vk, bool down, uint32_t time, std::optional<Point> pointer) {
    pressVirtualKey(vk, down);
    if (m_listener) m_listener(InputChange{time, pointer});
}

void FakeKeyboard::moved(uint32_t time, Point to) {
    if (m_listener) m_listener(InputChange{time, to});
}

bool FakeKeyboard::carriesKeysym(uint32_t keysym) const { return keycodeCarrying(keysym) != 0; }

bool FakeKeyboard::keysymDown(uint32_t keysym) const {
    for (const auto& [keycode, keysyms] : m_map)
        if (m_keycodesDown[keycode])
            for (uint32_t carried : keysyms)
                if (carried == keysym) return true;
    return false;
}

bool FakeKeyboard::physicalDown(uint16_t evdevCode) const {
    return evdevCode + kEvdevOffset < 256 && m_keycodesDown[evdevCode + kEvdevOffset];
}

bool FakeKeyboard::buttonDown(uint8_t button) const { return button < m_buttonsDown.size() && m_buttonsDown[button]; }

bool FakeKeyboard::pressedSinceLastRead(uint8_t vk) {
    const bool down = isDown(vk);
    const bool pressed = down && !m_wasDown[vk];
    m_wasDown[vk] = down;
    return pressed;
}

}  // namespace tarvoke::platform::fake
