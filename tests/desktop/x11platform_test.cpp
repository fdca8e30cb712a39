// The X11 platform on a real X server: what it injects arrives in the test
// window as it should, what it reads and captures matches the desktop.

#include <QCoreApplication>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

#include "platform/loop/qtloop.h"
#include "platform/x11/x11platform.h"
#include "screen/imagefiles.h"
#include "testwindow.h"

// Last: their macros (None, Bool) would break the headers above.
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

namespace tarvoke::platform::x11 {
namespace {

using desktoptest::Event;
using desktoptest::TestWindow;

class X11Test : public testing::Test {
protected:
    void SetUp() override {
        m_x11 = X11Platform::open(m_loop);
        ASSERT_NE(m_x11, nullptr) << "no X display";
        m_platform = m_x11->platform(nullptr);
        m_other = XOpenDisplay(nullptr);
        ASSERT_NE(m_other, nullptr);
    }
    void TearDown() override {
        if (m_x11) m_x11->input().releaseAll();
        if (m_other) XCloseDisplay(m_other);
    }

    // Waits up to five seconds, turning the event loop, for the condition.
    bool eventually(const std::function<bool()>& condition) {
        for (int i = 0; i < 500; ++i, m_platform.clock->wait(10))
            if (condition()) return true;
        return false;
    }
    bool keyStateBecomes(uint8_t vk, bool down) {
        return eventually([&] { return m_platform.keys->isDown(vk) == down; });
    }

    QtLoop m_loop;
    std::unique_ptr<X11Platform> m_x11;
    Platform m_platform;
    Display* m_other = nullptr;  // another client: a program or the user's keyboard
};

// Each button arrives where the cursor is. The clicks of one burst share a
// cursor question until a move of ours; the move after a click that the
// window manager holds back (it grabs the click to raise the window) is
// reported once both are through.
TEST_F(X11Test, ClicksArriveInOrderAndReadTheirOwnPositions) {
    TestWindow window;
    const Point a{window.rootX(true, 30), window.rootY(true, 40)};
    const Point b{window.rootX(true, 10), window.rootY(true, 20)};
    m_platform.input->setCursorPos(a.x, a.y);
    const auto first = m_platform.input->askCursorPos();
    for (uint32_t flags : {kLeftDown, kLeftUp, kRightDown, kRightUp, kMiddleDown, kMiddleUp})
        m_platform.input->mouseEvent(flags);
    const auto sameBurst = m_platform.input->askCursorPos();
    // Held input leaves at the event loop's next turn.
    m_loop.turn(false);
    ASSERT_EQ(window.waitFor(6, {"ButtonPress", "ButtonRelease"}).size(), 6u);
    EXPECT_EQ(m_platform.input->cursorPos(), a);
    m_platform.input->mouseEvent(kLeftDown);
    m_platform.input->mouseEvent(kLeftUp);
    m_platform.input->setCursorPos(b.x, b.y);
    const auto afterMove = m_platform.input->askCursorPos();
    m_platform.input->mouseEvent(kLeftDown);
    m_platform.input->mouseEvent(kLeftUp);
    EXPECT_EQ(first->get(), a);
    EXPECT_EQ(sameBurst->get(), a);
    EXPECT_EQ(afterMove->get(), b);
    m_platform.input->flush();
    const auto clicks = window.waitFor(10, {"ButtonPress", "ButtonRelease"});
    ASSERT_EQ(clicks.size(), 10u);
    EXPECT_EQ(clicks[6].at("x"), "30");
    EXPECT_EQ(clicks.back().at("x"), "10");
    // A flood is paced in windows of events, not event by event: each wait
    // for the server costs one write, and the flood loses no click.
    constexpr int kFlood = 400;
    const unsigned long writesBefore = m_x11->connection().flushes();
    for (int i = 0; i < kFlood; ++i) m_platform.input->mouseClick(kLeftDown, kLeftUp);
    m_platform.input->flush();
    EXPECT_LE(m_x11->connection().flushes() - writesBefore, 2u * kFlood / X11Input::kPaceEvents + 2);
    EXPECT_EQ(window.waitFor(10 + 2 * kFlood, {"ButtonPress", "ButtonRelease"}).size(), 10u + 2 * kFlood);
}

// Windows are found by class and title, case aside (also beyond ASCII); a
// vanished window is no window. (The recorder's window selection reads the
// names and parents.)
TEST_F(X11Test, WindowsAreFoundByClassAndTitle) {
    auto window = std::make_unique<TestWindow>(
        std::vector<std::string>{"--class", "FindMe", "--title", "Find Me Please", "--child-class", "Inner"});
    const WindowId top = static_cast<WindowId>(window->top());
    const WindowId child = static_cast<WindowId>(window->child());
    Windows& windows = *m_platform.windows;
    using S = std::optional<std::string>;
    EXPECT_EQ(windows.findWindow(S("FindMe"), S("Find Me Please")), top);
    EXPECT_EQ(windows.findWindow(S("FindMe"), std::nullopt), top);
    EXPECT_EQ(windows.findWindow(std::nullopt, S("Find Me Please")), top);
    EXPECT_EQ(windows.findWindow(S("findme"), S("FIND ME please")), top);
    EXPECT_EQ(windows.findWindow(S("FindMe"), S("Find Me Pleas")), 0u);
    EXPECT_EQ(windows.findWindow(S("FindMe"), S("")), 0u);
    EXPECT_EQ(windows.findWindowEx(top, 0, S("Inner"), std::nullopt), child);
    EXPECT_EQ(windows.findWindowEx(0, 0, S("FindMe"), std::nullopt), top);
    EXPECT_EQ(windows.findWindowEx(top, child, S("Inner"), std::nullopt), 0u);
    EXPECT_EQ(windows.windowFromPoint({window->rootX(true, 3), window->rootY(true, 3)}), child);
    EXPECT_EQ(windows.windowFromPoint({window->rootX(false, 3), window->rootY(false, 3)}), top);
    window.reset();
    // The server destroys a program's windows once it has seen its connection close.
    ASSERT_TRUE(eventually([&] {
        XWindowAttributes attributes;
        Display* display = m_x11->connection().display();
        return !m_x11->connection().checked([&] { XGetWindowAttributes(display, top, &attributes); });
    }));
    m_platform.input->sendMessage(top, 513, 0, 0);
    m_platform.input->flush();
    EXPECT_EQ(windows.className(top) + windows.title(top), "");
    EXPECT_EQ(windows.parent(child), 0u);
    EXPECT_EQ(windows.findWindowEx(top, 0, std::nullopt, std::nullopt), 0u);
}

// While the user holds a modifier, the script's key presses wait for its
// release (here XTest plays the user's keyboard).
TEST_F(X11Test, KeysWaitWhileTheUserHoldsAModifier) {
    TestWindow window;
    const std::vector<int> ours = m_x11->keys().testDevices();
    m_x11->keys().testDevices().clear();
    const KeyCode control = XKeysymToKeycode(m_other, XK_Control_L);
    XTestFakeKeyEvent(m_other, control, True, CurrentTime);
    XSync(m_other, False);
    ASSERT_TRUE(keyStateBecomes(17, true));
    QTimer::singleShot(50, [&] {
        XTestFakeKeyEvent(m_other, control, False, CurrentTime);
        XSync(m_other, False);
    });
    m_platform.input->keyEvent(65, kKeyPress);
    m_platform.input->keyEvent(65, kKeyRelease);
    m_platform.input->flush();
    m_x11->keys().testDevices() = ours;
    std::vector<std::string> keys;
    for (Event& key : window.waitFor(4, {"KeyPress", "KeyRelease"}))
        keys.push_back(key["type"] + " keysym=" + key["keysym"] + " state=" + key["state"]);
    EXPECT_EQ(keys, (std::vector<std::string>{"KeyPress keysym=0xffe3 state=0x0", "KeyRelease keysym=0xffe3 state=0x4",
                                              "KeyPress keysym=0x61 state=0x0", "KeyRelease keysym=0x61 state=0x0"}));
}

TEST_F(X11Test, KeyStateFollowsTheKeysAndKeepsThePressBit) {
    TestWindow window;
    m_platform.keys->pressedSinceLastRead(162);
    m_platform.input->keyEvent(162, kKeyPress);  // left Control
    ASSERT_TRUE(keyStateBecomes(162, true));
    EXPECT_TRUE(m_platform.keys->isDown(17)) << "the generic Control follows either side";
    EXPECT_TRUE(m_platform.keys->pressedSinceLastRead(162));
    EXPECT_FALSE(m_platform.keys->pressedSinceLastRead(162)) << "the bit is taken by the read";
    m_platform.input->keyEvent(162, kKeyRelease);
    EXPECT_TRUE(keyStateBecomes(17, false));

    // Keys and buttons pressed by another client count too.
    ASSERT_EQ(std::system("xdotool keydown shift"), 0);
    EXPECT_TRUE(keyStateBecomes(16, true));
    ASSERT_EQ(std::system("xdotool keyup shift mousedown 3"), 0);
    EXPECT_TRUE(keyStateBecomes(16, false));
    EXPECT_TRUE(keyStateBecomes(2, true));
    ASSERT_EQ(std::system("xdotool mouseup 3"), 0);
    EXPECT_TRUE(keyStateBecomes(2, false));
}

TEST_F(X11Test, WaitsEndAtTheirDeadlineOrWhenCancelled) {
    Clock& clock = *m_platform.clock;
    int64_t start = clock.monotonicMs();
    clock.wait(50);
    EXPECT_GE(clock.monotonicMs() - start, 50);

    QTimer::singleShot(30, [&] { clock.cancelWaits(); });
    start = clock.monotonicMs();
    clock.wait(5000);
    EXPECT_LT(clock.monotonicMs() - start, 1000);

    // A wait nested in a handler of an outer wait ends on its own deadline
    // and leaves the outer one running to its own.
    int64_t innerEnd = 0;
    QTimer::singleShot(10, [&] {
        clock.wait(20);
        innerEnd = clock.monotonicMs();
    });
    start = clock.monotonicMs();
    clock.wait(100);
    EXPECT_GE(clock.monotonicMs() - start, 100);
    EXPECT_GE(innerEnd - start, 30);
    EXPECT_LT(innerEnd - start, 100);
}

// A capture shows the test window's child, painted by the server from a
// background pixel that another client sets, at its place on the screen, and
// a capture again sees a change in the same buffer.
TEST_F(X11Test, CaptureShowsAPaintedWindowAtItsPlace) {
    screen::ImageStore store;
    // Captures until the colour shows: the server paints on its own time.
    const auto captureShowing = [&](uint32_t pixel, int x, int y) {
        return eventually([&] {
            screen::captureScreen(store, *m_platform.screen, 0);
            return store.image(0) && store.image(0)->at(x, y) == pixel;
        });
    };
    TestWindow window;
    XSetWindowBackground(m_other, window.child(), 0xC86432);  // red 200, green 100, blue 50
    XClearWindow(m_other, window.child());
    XSync(m_other, False);
    const int x = window.rootX(true, 0), y = window.rootY(true, 0);
    ASSERT_TRUE(captureShowing(0xC86432, x, y));
    const PixelGrid& grid = *store.image(0);
    const Size size = m_platform.screen->screenSize();
    EXPECT_EQ(grid.width, size.width);
    EXPECT_EQ(grid.height, size.height);
    EXPECT_EQ(grid.at(x - 1, y - 1), 0xFFFFFFu);
    EXPECT_EQ(grid.at(x + 199, y + 99), 0xC86432u);
    EXPECT_NE(grid.at(x + 200, y + 100), 0xC86432u);

    const uint32_t* buffer = grid.pixels.data();
    XMoveWindow(m_other, window.child(), 70, 60);
    XSync(m_other, False);
    ASSERT_TRUE(captureShowing(0xC86432, x + 219, y + 109));
    EXPECT_EQ(store.image(0)->pixels.data(), buffer);
    EXPECT_EQ(store.image(0)->at(x, y), 0xFFFFFFu);
}

// A timer may end itself from its own tick, as the poll loop's may; Qt's
// object then goes at the loop's next turn and never fires again.
TEST(QtLoopTest, ATimerEndsItselfFromItsTick) {
    QtLoop loop;
    int ticks = 0;
    std::unique_ptr<EventLoop::Handle> timer;
    timer = loop.every(std::chrono::milliseconds(1), [&] {
        ++ticks;
        timer.reset();
    });
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(30);
    while (std::chrono::steady_clock::now() < until) loop.turn(false);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(timer, nullptr);
}

TEST(SplitWords, SplitsLikeAShellWithoutOne) {
    EXPECT_EQ(splitWords("  a  'b c'  \"d \\\"e\\\"\" f\\ g $HOME"),
              (std::vector<std::string>{"a", "b c", "d \"e\"", "f g", "$HOME"}));
    EXPECT_EQ(splitWords(""), std::vector<std::string>{});
    EXPECT_EQ(splitWords("''"), std::vector<std::string>{""});
}

}  // namespace
}  // namespace tarvoke::platform::x11

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
