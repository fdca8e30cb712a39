// The hotkey poll: which of Ctrl+0/1/8/9 fire in one tick, and how the
// "pressed since the last read" bit makes a held key fire once.

#include <gtest/gtest.h>

#include <set>

#include "playback/hotkeys.h"

namespace tarvoke::playback {
namespace {

// Keys down now, and keys whose press bit is set; a read of the bit clears it.
class KeyTable : public platform::KeyState {
public:
    void press(uint8_t vk) {
        down.insert(vk);
        pressed.insert(vk);
    }
    bool isDown(uint8_t vk) override { return down.count(vk) != 0; }
    bool pressedSinceLastRead(uint8_t vk) override { return pressed.erase(vk) != 0; }

    std::set<uint8_t> down;
    std::set<uint8_t> pressed;
};

struct PollCase {
    const char* name;
    std::vector<uint8_t> pressedKeys;  // pressed and still down
    std::vector<uint8_t> releasedKeys; // pressed and let go before the tick
    HotkeyConditions conditions;
    std::vector<Hotkey> expected;
};

class PollTest : public testing::TestWithParam<PollCase> {};

TEST_P(PollTest, FiresTheHotkeysOfTheTable) {
    const PollCase& c = GetParam();
    KeyTable keys;
    for (uint8_t vk : c.pressedKeys) keys.press(vk);
    for (uint8_t vk : c.releasedKeys) keys.pressed.insert(vk);
    EXPECT_EQ(pollHotkeys(keys, c.conditions), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Hotkeys, PollTest,
    testing::Values(
        PollCase{"CtrlZeroStops", {17, 48}, {}, {}, {Hotkey::Stop}},
        PollCase{"ZeroWithoutCtrlDoesNothing", {48}, {}, {}, {}},
        PollCase{"NumpadZeroIsNotZero", {17, 96}, {}, {}, {}},
        PollCase{"TapBetweenTicksDoesNotCount", {17}, {48}, {}, {}},
        PollCase{"AStopSeenInAStepStopsOnceTheKeysAreUp", {}, {17, 48}, {.stopSeen = true}, {Hotkey::Stop}},
        PollCase{"AStopSeenInAStepFiresOnce", {17, 48}, {}, {.stopSeen = true}, {Hotkey::Stop}},
        PollCase{"CtrlOneOnlyInCorrectTime", {17, 49}, {}, {}, {}},
        PollCase{"CtrlOnePausesCorrectTime", {17, 49}, {}, {.correctTimeRunning = true}, {Hotkey::Pause}},
        PollCase{"RecordAndPlay", {17, 56, 57}, {}, {}, {Hotkey::Record, Hotkey::Play}},
        PollCase{"RecordAndPlayBlockedWhileRecording", {17, 56, 57}, {}, {.recording = true}, {}},
        PollCase{"StopStillWorksWhileRecording", {17, 48}, {}, {.recording = true}, {Hotkey::Stop}},
        PollCase{"AllInTableOrder", {17, 57, 56, 49, 48}, {}, {.correctTimeRunning = true},
                 {Hotkey::Stop, Hotkey::Pause, Hotkey::Record, Hotkey::Play}}),
    [](const testing::TestParamInfo<PollCase>& info) { return info.param.name; });

TEST(HotkeyPoll, AHeldKeyFiresOnce) {
    KeyTable keys;
    keys.press(17);
    keys.press(48);
    EXPECT_EQ(pollHotkeys(keys), std::vector<Hotkey>{Hotkey::Stop});
    EXPECT_TRUE(pollHotkeys(keys).empty());
    keys.press(48);
    EXPECT_EQ(pollHotkeys(keys), std::vector<Hotkey>{Hotkey::Stop});
}

TEST(HotkeyPoll, ABlockedKeyLosesItsPress) {
    // Ctrl+9 pressed during a recording must not start a play once the
    // recording ends while the key is still held.
    KeyTable keys;
    keys.press(17);
    keys.press(57);
    EXPECT_TRUE(pollHotkeys(keys, {.recording = true}).empty());
    EXPECT_TRUE(pollHotkeys(keys).empty());
}

TEST(HotkeyPoll, NoReadWithoutCtrl) {
    // The digit's press bit survives ticks without Control.
    KeyTable keys;
    keys.press(48);
    EXPECT_TRUE(pollHotkeys(keys).empty());
    keys.press(17);
    keys.pressed.erase(17);
    EXPECT_EQ(pollHotkeys(keys), std::vector<Hotkey>{Hotkey::Stop});
}

}  // namespace
}  // namespace tarvoke::playback
