// The hotkey poll: which of Ctrl+0/1/8/9 fire in one tick, and how the
// "pressed since the last read" bit makes a held key fire once.

#include <gtest/gtest.h>

#include <set>

#include "playback/hotkeys.h"

namespace tarvoke::playback {
namespace {

// Keys down now, and keys whose press bit is set; a read of the bit clears it.
struct Keys : platform::KeyState {
    void press(std::initializer_list<uint8_t> vks) {
        down.insert(vks);
        pressed.insert(vks);
    }
    bool isDown(uint8_t vk) override { return down.count(vk) != 0; }
    bool pressedSinceLastRead(uint8_t vk) override { return pressed.erase(vk) != 0; }
    std::set<uint8_t> down, pressed;
};

using H = std::vector<Hotkey>;

TEST(HotkeyPoll, FiresTheHotkeysOfTheTable) {
    struct Case {
        const char* name;
        std::initializer_list<uint8_t> pressed;   // pressed and still down
        std::initializer_list<uint8_t> released;  // pressed and let go before the tick
        HotkeyConditions conditions;
        H expected;
    } const cases[] = {
        {"Ctrl+0 stops", {17, 48}, {}, {}, {Hotkey::Stop}},
        {"0 without Ctrl does nothing", {48}, {}, {}, {}},
        {"numpad 0 is not 0", {17, 96}, {}, {}, {}},
        {"a tap between ticks does not count", {17}, {48}, {}, {}},
        {"a stop seen in a step stops once the keys are up", {}, {17, 48}, {.stopSeen = true}, {Hotkey::Stop}},
        {"a stop seen in a step fires once", {17, 48}, {}, {.stopSeen = true}, {Hotkey::Stop}},
        {"Ctrl+1 only in Correct Time", {17, 49}, {}, {}, {}},
        {"Ctrl+1 pauses Correct Time", {17, 49}, {}, {.correctTimeRunning = true}, {Hotkey::Pause}},
        {"record and play", {17, 56, 57}, {}, {}, {Hotkey::Record, Hotkey::Play}},
        {"record and play blocked while recording", {17, 56, 57}, {}, {.recording = true}, {}},
        {"stop still works while recording", {17, 48}, {}, {.recording = true}, {Hotkey::Stop}},
        {"all in the table's order", {17, 57, 56, 49, 48}, {}, {.correctTimeRunning = true},
         {Hotkey::Stop, Hotkey::Pause, Hotkey::Record, Hotkey::Play}},
    };
    for (const Case& c : cases) {
        Keys keys;
        keys.press(c.pressed);
        keys.pressed.insert(c.released);
        EXPECT_EQ(pollHotkeys(keys, c.conditions), c.expected) << c.name;
    }
}

TEST(HotkeyPoll, APressCountsOnceAndOnlyWhenItsHotkeyIsRead) {
    Keys held;  // a held key fires once
    held.press({17, 48});
    EXPECT_EQ(pollHotkeys(held), H{Hotkey::Stop});
    EXPECT_TRUE(pollHotkeys(held).empty());
    held.press({48});
    EXPECT_EQ(pollHotkeys(held), H{Hotkey::Stop});

    // Ctrl+9 pressed during a recording must not start a play once the
    // recording ends while the key is still held.
    Keys blocked;
    blocked.press({17, 57});
    EXPECT_TRUE(pollHotkeys(blocked, {.recording = true}).empty());
    EXPECT_TRUE(pollHotkeys(blocked).empty());

    // The digit's press bit survives ticks without Control.
    Keys late;
    late.press({48});
    EXPECT_TRUE(pollHotkeys(late).empty());
    late.down.insert(17);
    EXPECT_EQ(pollHotkeys(late), H{Hotkey::Stop});
}

}  // namespace
}  // namespace tarvoke::playback
