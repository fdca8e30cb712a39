// Capture on a real X server: a window painted with known colours is found
// by the screen commands at its place on the screen.

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "engine/sc.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/dryrun/dryrun.h"
#include "platform/loop/qtloop.h"
#include "platform/x11/x11platform.h"

// Last: its macros (None, Bool) would break the headers above.
#include <X11/Xlib.h>

namespace tarvoke {
namespace {

// A borderless window that the window manager leaves where it is put, of
// one colour, with a square of another colour inside; the server paints both
// from their background pixels.
class PaintedWindow {
public:
    PaintedWindow(int x, int y, unsigned long colour, int innerX, int innerY, unsigned long innerColour) {
        m_display = XOpenDisplay(nullptr);
        if (!m_display) return;
        XSetWindowAttributes attributes{};
        attributes.override_redirect = True;
        attributes.background_pixel = colour;
        const Window root = DefaultRootWindow(m_display);
        m_window = XCreateWindow(m_display, root, x, y, 120, 80, 0, CopyFromParent, InputOutput, CopyFromParent,
                                 CWOverrideRedirect | CWBackPixel, &attributes);
        attributes.background_pixel = innerColour;
        m_inner = XCreateWindow(m_display, m_window, innerX, innerY, 6, 4, 0, CopyFromParent, InputOutput,
                                CopyFromParent, CWBackPixel, &attributes);
        XMapWindow(m_display, m_inner);
        XMapRaised(m_display, m_window);
        XSync(m_display, False);
    }
    ~PaintedWindow() {
        if (m_display) XCloseDisplay(m_display);
    }
    bool ok() const { return m_display != nullptr; }
    void moveInner(int x, int y) {
        XMoveWindow(m_display, m_inner, x, y);
        XSync(m_display, False);
    }

private:
    Display* m_display = nullptr;
    Window m_window = 0;
    Window m_inner = 0;
};

class ScreenCaptureTest : public testing::Test {
protected:
    ScreenCaptureTest()
        : m_input([this](std::string_view line) { lines.emplace_back(line); }), m_commands(m_session),
          m_engine(m_commands) {}

    void SetUp() override {
        m_x11 = platform::x11::X11Platform::open(m_loop);
        ASSERT_NE(m_x11, nullptr) << "no X display";
        m_session.platform = m_x11->platform(nullptr);
        m_session.platform.input = &m_input;  // the cursor's move is read from its line
    }
    void run(const std::string& body) {
        std::string text = "Function(Main);\n" + body + "\nEndFunction();";
        m_engine.initialize(text);
        m_engine.execute();
    }
    // Captures until the painted colour shows (the server paints on its own time).
    void captureShowing(uint32_t pixel, int x, int y) {
        for (int i = 0; i < 100; ++i) {
            run("CaptureScreen(imagesave0);");
            const screen::PixelGrid* grid = m_session.imageTable.image(0);
            if (grid && grid->at(x, y) == pixel) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        FAIL() << "the painted window never showed";
    }

    std::vector<std::string> lines;
    platform::dryrun::DryRunInput m_input;
    platform::QtLoop m_loop;
    std::unique_ptr<platform::x11::X11Platform> m_x11;
    host::Session m_session;
    host::HostCommands m_commands;
    engine::SC m_engine;
};

TEST_F(ScreenCaptureTest, FindsAPaintedColourAtItsScreenPosition) {
    PaintedWindow window(300, 200, 0x204060, 50, 30, 0xC86432);  // inner: red 200, green 100, blue 50
    ASSERT_TRUE(window.ok());
    captureShowing(0xC86432, 350, 230);
    const screen::PixelGrid& grid = *m_session.imageTable.image(0);
    const platform::Size size = m_session.platform.screen->screenSize();
    EXPECT_EQ(grid.width, size.width);
    EXPECT_EQ(grid.height, size.height);
    EXPECT_EQ(grid.at(300, 200), 0x204060u);
    EXPECT_EQ(grid.at(419, 279), 0x204060u);

    run("CreateColorRange(colorrange1, 200, 50, 100, 200, 50, 100);\nMoveMouseToColorRange(imagesave0, colorrange1);\n"
        "IsPixelIn(r, imagesave0, 300, 200, 419, 279, colorrange1);");
    EXPECT_EQ(lines, (std::vector<std::string>{"SetCursorPos 350 230"}));
    EXPECT_EQ(m_engine.getVariableAsString("r"), "True");
    EXPECT_EQ(m_engine.getVariableAsString("lx"), "350");
}

TEST_F(ScreenCaptureTest, ACaptureAgainSeesTheChangeInTheSameBuffer) {
    PaintedWindow window(600, 500, 0x000010, 10, 10, 0x10F020);
    ASSERT_TRUE(window.ok());
    captureShowing(0x10F020, 610, 510);
    const uint32_t* buffer = m_session.imageTable.image(0)->pixels.data();
    window.moveInner(70, 60);
    captureShowing(0x10F020, 670, 560);
    EXPECT_EQ(m_session.imageTable.image(0)->pixels.data(), buffer);
    EXPECT_EQ(m_session.imageTable.image(0)->at(610, 510), 0x000010u);
}

}  // namespace
}  // namespace tarvoke

// The X11 platform watches its connection with a Qt socket notifier.
int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
