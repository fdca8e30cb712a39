// Platform parts below the players: the poll loop's handlers in their order
// and its waits until the next timer, where consecutive waits end, the
// virtual-key table.

#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>
#include <set>

#include "platform/fake/fakekeyboard.h"
#include "platform/keytable.h"
#include "platform/loop/pollloop.h"
#include "platform/waitschedule.h"

namespace tarvoke::test {
namespace {

using std::chrono::milliseconds;
using Handle = std::unique_ptr<platform::EventLoop::Handle>;

// Hooks run first, then readable descriptors, then due timers; a handler
// may end its own watch and another's.
TEST(PollLoop, HandlersRunInOrderAndMayEndWatches) {
    platform::PollLoop loop;
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe(ends), 0);
    std::vector<std::string> calls;
    Handle hook, readable, other, timer;
    hook = loop.beforeEachTurn([&] { calls.push_back("hook"); });
    readable = loop.watchReadable(ends[0], [&] {
        calls.push_back("readable");
        readable.reset();
        other.reset();
    });
    other = loop.watchReadable(ends[0], [&] { calls.push_back("other"); });
    timer = loop.every(milliseconds(1), [&] { calls.push_back("timer"); });
    EXPECT_EQ(::write(ends[1], "x", 1), 1);
    ::usleep(2000);
    loop.turn(false);
    loop.turn(false);
    EXPECT_EQ(calls, (std::vector<std::string>{"hook", "readable", "timer", "hook"}));
    ::close(ends[0]);
    ::close(ends[1]);
}

// A waiting turn sleeps until the next timer, and no longer.
TEST(PollLoop, AWaitingTurnWakesForTheNextTimer) {
    platform::PollLoop loop;
    int ticks = 0;
    const Handle timer = loop.every(milliseconds(20), [&] { ++ticks; });
    const auto start = std::chrono::steady_clock::now();
    while (ticks == 0) loop.turn(true);
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took, milliseconds(20));
    EXPECT_LT(took, milliseconds(1000));
}

constexpr int64_t kMs = 1'000'000;

TEST(WaitSchedule, ConsecutiveWaitsLieEndToEndUnlessInterrupted) {
    platform::WaitSchedule schedule;
    EXPECT_EQ(schedule.deadlineFor(100 * kMs, 10), 110 * kMs);  // the first counts from now
    schedule.reached(110 * kMs);
    // 0.4 ms went on a click between the pauses: the next counts from 110.
    EXPECT_EQ(schedule.deadlineFor(110 * kMs + 400'000, 10), 120 * kMs);
    schedule.reached(120 * kMs);
    // After slow work the pause waits in full.
    EXPECT_EQ(schedule.deadlineFor(130 * kMs, 10), 140 * kMs);
    schedule.reached(140 * kMs);
    schedule.interrupted();
    EXPECT_EQ(schedule.deadlineFor(141 * kMs, 5), 146 * kMs);
    schedule.reached(146 * kMs);
    EXPECT_EQ(schedule.deadlineFor(145 * kMs, 5), 150 * kMs);  // never counts from a deadline still ahead
}

// The virtual-key table over a fake keyboard: every number the recorder asks
// about reads back as itself when pressed, on the map's own keys.

using platform::fake::FakeKeyboard;
using platform::KeyKind, platform::keyMeaning;

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
}  // namespace tarvoke::test
