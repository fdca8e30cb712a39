// The virtual-key table over a fake keyboard: every number the recorder asks
// about means something, and pressing it reads back as that number down.

#include <gtest/gtest.h>

#include <set>

#include "platform/keytable.h"
#include "platform/fake/fakekeyboard.h"

namespace tarvoke::test {
namespace {

using platform::KeyKind;
using platform::fake::FakeKeyboard;

// The numbers a recording tick asks about: the three buttons, 3, 5 to 254
// (17 only through its sides' rule, but it is asked too).
std::vector<uint8_t> recorderNumbers() {
    std::vector<uint8_t> numbers{1, 2, 4, 3};
    for (int vk = 5; vk <= 254; ++vk) numbers.push_back(static_cast<uint8_t>(vk));
    return numbers;
}

// Numbers that Windows leaves reserved, unassigned or to OEMs without a
// US key, written out here independently of the table.
const std::set<int> kReserved = [] {
    std::set<int> s{7, 10, 11, 14, 15, 22, 26, 30, 42, 94, 223, 224, 225, 227, 228, 229, 230, 231, 232};
    for (int vk = 58; vk <= 64; ++vk) s.insert(vk);
    for (int vk = 136; vk <= 143; ++vk) s.insert(vk);
    for (int vk = 146; vk <= 159; ++vk) s.insert(vk);
    for (int vk = 184; vk <= 185; ++vk) s.insert(vk);
    for (int vk = 193; vk <= 218; ++vk) s.insert(vk);
    for (int vk = 233; vk <= 255; ++vk) s.insert(vk);
    s.insert(0);
    return s;
}();

std::set<int> numbersDown(FakeKeyboard& keyboard) {
    std::set<int> down;
    for (int vk = 1; vk <= 254; ++vk)
        if (keyboard.isDown(static_cast<uint8_t>(vk))) down.insert(vk);
    return down;
}

// What reads as down after pressing vk alone: the number, and the generic
// modifier beside a side, or the left side beside the generic one.
std::set<int> expectedDown(int vk) {
    switch (vk) {
    case 16: case 160: return {16, 160};
    case 161: return {16, 161};
    case 17: case 162: return {17, 162};
    case 163: return {17, 163};
    case 18: case 164: return {18, 164};
    case 165: return {18, 165};
    default: return {vk};
    }
}

TEST(KeyTable, EveryNumberTheRecorderAsksAboutHasAMeaningUnlessReserved) {
    for (uint8_t vk : recorderNumbers()) {
        const bool hasKey = platform::keyMeaning(vk).kind != KeyKind::None;
        EXPECT_NE(hasKey, kReserved.count(vk) == 1) << "virtual key " << int(vk);
    }
}

TEST(KeyTable, PressingEachNumberReadsBackAsThatNumberAlone) {
    FakeKeyboard keyboard = FakeKeyboard::us();
    for (uint8_t vk : recorderNumbers()) {
        if (kReserved.count(vk)) continue;
        keyboard.releaseAll();
        keyboard.pressVirtualKey(vk, true);
        EXPECT_EQ(numbersDown(keyboard), expectedDown(vk)) << "virtual key " << int(vk);
        keyboard.pressVirtualKey(vk, false);
        EXPECT_TRUE(numbersDown(keyboard).empty()) << "virtual key " << int(vk);
    }
}

TEST(KeyTable, GenericModifiersAreDownWhileEitherSideIs) {
    FakeKeyboard keyboard = FakeKeyboard::us();
    keyboard.pressVirtualKey(161, true);
    keyboard.pressVirtualKey(163, true);
    EXPECT_EQ(numbersDown(keyboard), (std::set<int>{16, 161, 17, 163}));
    keyboard.pressVirtualKey(160, true);
    keyboard.pressVirtualKey(161, false);
    EXPECT_TRUE(keyboard.isDown(16));
}

TEST(KeyTable, DigitsPressTheKeyCarryingThemAtAnyLevel) {
    FakeKeyboard keyboard = FakeKeyboard::azerty();
    EXPECT_EQ(keyboard.keycodeFor(49), 10);  // the key that types "&"
    keyboard.setKeycodeDown(10, true);
    EXPECT_EQ(numbersDown(keyboard), (std::set<int>{49}));
}

TEST(KeyTable, RightAltFallsBackToLevel3ShiftWhereTheMapHasNoAltR) {
    FakeKeyboard keyboard = FakeKeyboard::azerty();
    EXPECT_EQ(keyboard.keycodeFor(165), 108);
    keyboard.setKeycodeDown(108, true);
    EXPECT_EQ(numbersDown(keyboard), (std::set<int>{18, 165}));
}

TEST(KeyTable, OemKeysArePlacesOnTheKeyboardWhateverTheyType) {
    const std::pair<int, int> places[] = {{186, 47}, {187, 21}, {188, 59}, {189, 20}, {190, 60}, {191, 61},
                                          {192, 49}, {219, 34}, {220, 51}, {221, 35}, {222, 48}, {226, 94}};
    FakeKeyboard keyboard = FakeKeyboard::azerty();
    keyboard.setKey(47, {'m', 'M'});
    for (auto [vk, keycode] : places) EXPECT_EQ(keyboard.keycodeFor(static_cast<uint8_t>(vk)), keycode) << vk;
}

TEST(KeyTable, MouseButtonsAreVirtualKeys) {
    FakeKeyboard keyboard = FakeKeyboard::us();
    keyboard.setButtonDown(2, true);  // X's middle button
    EXPECT_EQ(numbersDown(keyboard), (std::set<int>{4}));
    keyboard.setButtonDown(3, true);
    EXPECT_EQ(numbersDown(keyboard), (std::set<int>{2, 4}));
}

}  // namespace
}  // namespace tarvoke::test
