// The virtual-key table over a fake keyboard: every number the recorder asks
// about reads back as itself when pressed, on the map's own keys.

#include <gtest/gtest.h>

#include <set>

#include "platform/fake/fakekeyboard.h"
#include "platform/keytable.h"

namespace tarvoke::platform {
namespace {

using fake::FakeKeyboard;

std::set<int> numbersDown(FakeKeyboard& keyboard) {
    std::set<int> down;
    for (int vk = 1; vk <= 254; ++vk)
        if (keyboard.isDown(static_cast<uint8_t>(vk))) down.insert(vk);
    return down;
}

// Pressed alone, a number reads as itself; a side of a modifier also as the
// generic one, and the generic one as its left side. A number with no
// meaning presses nothing.
TEST(KeyTable, EachNumberReadsBackAsItselfAlone) {
    const std::map<int, std::set<int>> alsoDown = {{16, {160}}, {160, {16}}, {161, {16}}, {17, {162}}, {162, {17}},
                                                   {163, {17}}, {18, {164}}, {164, {18}}, {165, {18}}};
    FakeKeyboard keyboard = FakeKeyboard::us();
    int meaningful = 0;
    for (int vk = 1; vk <= 254; ++vk) {
        keyboard.releaseAll();
        keyboard.pressVirtualKey(static_cast<uint8_t>(vk), true);
        std::set<int> expected;
        if (keyMeaning(static_cast<uint8_t>(vk)).kind != KeyKind::None) {
            ++meaningful;
            expected = {vk};
            if (alsoDown.count(vk)) expected.merge(std::set<int>(alsoDown.at(vk)));
        }
        EXPECT_EQ(numbersDown(keyboard), expected) << "virtual key " << vk;
        keyboard.pressVirtualKey(static_cast<uint8_t>(vk), false);
        EXPECT_TRUE(numbersDown(keyboard).empty()) << "virtual key " << vk;
    }
    // A row lost from the table would press nothing and pass the loop above:
    // the count of rows shows it.
    EXPECT_EQ(meaningful, 156);
}

TEST(KeyTable, GenericModifiersAreDownWhileEitherSideIs) {
    FakeKeyboard keyboard = FakeKeyboard::us();
    keyboard.pressVirtualKey(161, true);
    keyboard.pressVirtualKey(163, true);
    EXPECT_EQ(numbersDown(keyboard), (std::set<int>{16, 161, 17, 163}));
    keyboard.pressVirtualKey(160, true);
    keyboard.pressVirtualKey(161, false);
    EXPECT_TRUE(keyboard.isDown(16));
    keyboard.setButtonDown(2, true);  // X's middle button
    keyboard.setButtonDown(3, true);
    EXPECT_EQ(numbersDown(keyboard), (std::set<int>{16, 160, 17, 163, 2, 4}));
}

// On a French map: a digit presses the key carrying it at any level (49: the
// key that types "&"), the right Alt falls back to ISO_Level3_Shift, and OEM
// keys are places on the keyboard whatever they type.
TEST(KeyTable, KeysOfAnotherMap) {
    const std::pair<int, int> keys[] = {{49, 10},  {165, 108}, {186, 47}, {187, 21}, {188, 59}, {189, 20}, {190, 60},
                                        {191, 61}, {192, 49},  {219, 34}, {220, 51}, {221, 35}, {222, 48}, {226, 94}};
    FakeKeyboard keyboard = FakeKeyboard::azerty();
    keyboard.setKey(47, {'m', 'M'});
    for (auto [vk, keycode] : keys) {
        EXPECT_EQ(keyboard.keycodeFor(static_cast<uint8_t>(vk)), keycode) << vk;
        keyboard.releaseAll();
        keyboard.setKeycodeDown(static_cast<uint8_t>(keycode), true);
        EXPECT_TRUE(numbersDown(keyboard).count(vk)) << vk;
    }
    keyboard.releaseAll();
    keyboard.setKeycodeDown(10, true);
    EXPECT_EQ(numbersDown(keyboard), (std::set<int>{49}));
}

}  // namespace
}  // namespace tarvoke::platform
