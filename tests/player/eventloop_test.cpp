// The yield before every statement is the player's real event loop: timers
// fire and stop a run that never ends by itself.

#include <gtest/gtest.h>

#include <QTimer>
#include <QCoreApplication>
#include <cstdlib>
#include <memory>

#include "engine/sc.h"
#include "eventloop.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/dryrun/dryrun.h"
#include "playback/playback.h"

namespace tarvoke::test {
namespace {

class PlayerLoopTest : public ::testing::Test {
protected:
    PlayerLoopTest() {
        session.platform = platform.platform();
        engine.setExternalCommands(&commands);
    }

    std::vector<std::string> printed;
    platform::dryrun::DryRunPlatform platform{[this](std::string_view line) { printed.emplace_back(line); },
                                              [] { QCoreApplication::processEvents(); }};
    host::Session session;
    engine::SC engine{session};
    host::HostCommands commands;
    playback::Playback playback{engine, session};
};

TEST_F(PlayerLoopTest, ATimerStopsAnEndlessLoop) {
    playback.load("Function(Main); While(1=1); EndWhile(); EndFunction();");
    int fired = 0;
    QTimer::singleShot(50, [&] {
        ++fired;
        playback.stop();
    });
    playback.run();
    EXPECT_EQ(fired, 1);
    EXPECT_TRUE(playback.stopRequested());
}

TEST_F(PlayerLoopTest, ARepeatingTimerKeepsFiringInALoop) {
    // The timer counts to 3 into a variable the loop reads.
    playback.load("Function(Main); Int(n, 0); While(n < 3); EndWhile(); Message(n, normal, done); EndFunction();");
    QTimer timer;
    timer.setInterval(5);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        std::string one = "1";
        engine.GetVariable(one);
        engine.AddSetVariable("n", engine::kLong, 12);
    });
    timer.start();
    playback.run();
    EXPECT_EQ(printed, (std::vector<std::string>{"MessageBox 0 \"done\" \"3\""}));
}

}  // namespace
}  // namespace tarvoke::test

int main(int argc, char** argv) {
    unsetenv("QT_NO_GLIB");
    std::unique_ptr<QCoreApplication> app;
    {
        const tarvoke::player::UnixEventDispatcherChoice dispatcher;
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    // Programs a script starts must not inherit the player's dispatcher choice.
    if (std::getenv("QT_NO_GLIB") != nullptr) return 1;
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
