// Correct Time: the scan for the recorded time, the calibration and the
// rewrite of SetPausePercent, and a timed run on a clock the test moves.

#include <gtest/gtest.h>

#include "engine/sc.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/dryrun/dryrun.h"
#include "playback/correcttime.h"

namespace tarvoke::test {
namespace {

using playback::TimedRun;

TEST(CorrectTime, ScanAddsEveryOrigionalPlayTimeStatement) {
    const struct {
        const char* text;
        double sum;
    } rows[] = {
        {"function(main);\norigionalplaytime(10.5);\nsetpausepercent(100);\nendfunction();", 10.5},
        {"origionalplaytime(5.0);\r\norigionalplaytime(5.5);", 10.5},  // two recordings joined
        {"origionalplaytime (3);origionalplaytime(\n4);", 4},          // a blank hides; line ends do not
        {"origionalplaytime(x);origionalplaytime();origionalplaytime(2)", 0},  // no number; no ";" at the end
        {"message(\"a;origionalplaytime(7);b\");", 7},                  // every ";" ends a statement
        {"", 0},
    };
    for (const auto& row : rows) EXPECT_DOUBLE_EQ(playback::origionalPlayTime(row.text), row.sum) << row.text;
}

TEST(CorrectTime, CalibrationIsMeasuredOverRecorded) {
    const struct {
        int32_t seconds, milliseconds;
        double recorded, measured, percent;
    } rows[] = {
        {21, 0, 10.5, 21.0, 200},
        {12, 45, 12.45, 12.45, 100},  // 45 ms read as .45, as the recorder writes them
        {3, 1234, 6.1234, 3.1234, 3.1234 / 6.1234 * 100},  // a late tick: four digits
        {0, 0, 10.5, 0, 0},
        {7, 5, 0, 7.5, 100},  // nothing recorded
    };
    for (const auto& row : rows) {
        const double measured = playback::measuredTime(row.seconds, row.milliseconds);
        EXPECT_DOUBLE_EQ(measured, row.measured);
        EXPECT_DOUBLE_EQ(playback::newPausePercent(measured, row.recorded), row.percent);
    }
}

TEST(CorrectTime, ReplaceIgnoresCaseAndWritesTheLiteral) {
    const struct {
        const char* text;
        const char* old;
        double percent;
        const char* result;
    } rows[] = {
        {"a;\nsetpausepercent(100);\nSETPAUSEPERCENT(100);", "100", 200, "a;\nSetPausePercent(200);\nSetPausePercent(200);"},
        {"SetPausePercent(50);", "100", 200, "SetPausePercent(50);"},
        {"SetPausePercent(100);", "100", 12.5, "SetPausePercent(12.5);"},
        {"SetPausePercent(x);", "", 200, "SetPausePercent(x);"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(playback::replacePausePercent(row.text, row.old, row.percent), row.result) << row.text;
    EXPECT_EQ(playback::timeReport({21, 10.5, 200}),
              "Time took: 21 seconds out of Origional Play Time: 10.5 seconds");
}

// A clock whose waits pass at once and move time on; the seconds timer
// ticks as its seconds go by, as the event loop would run it.
class TimedRunTest : public ::testing::Test, public platform::Clock {
protected:
    TimedRunTest() {
        session.platform = roles.platform();
        session.platform.clock = this;
    }
    void yield() override {}
    void wait(int32_t ms) override {
        for (int32_t i = 0; i < ms; ++i)
            if (++now - lastSecond == 1000) lastSecond = now, run.secondTick();
        if (onWait) onWait();
    }
    void cancelWaits() override {}
    int64_t monotonicMs() override { return now; }

    playback::Calibration timedRun(std::string text, engine::ExecuteType type) {
        lastSecond = now;
        run.begin(text);
        run.run(text, type);
        return run.finish();
    }

    int64_t now = 5000, lastSecond = 0;
    std::function<void()> onWait;
    platform::dryrun::LineSink sink = [](std::string_view) {};
    platform::dryrun::DryRunPlatform roles{sink, [] {}};
    host::Session session;
    host::HostCommands commands{session};
    engine::SC engine{commands};
    playback::Playback playback{engine, session};
    TimedRun run{engine, playback, session};
};

TEST_F(TimedRunTest, RewritesThePercentTheRunCarriedOut) {
    const struct {
        const char* pause;
        const char* rewritten;
        double measured;
    } rows[] = {
        {"Pause(21000);", "SetPausePercent(200);", 21},
        {"Pause(5250);", "SetPausePercent(50);", 5.25},  // 250 ms: .250 reads .25
        {"", "SetPausePercent(0);", 0},
    };
    for (const auto& row : rows) {
        const std::string text = std::string("Function(Main);\nORIGIONALPLAYTIME(10.5);\nsetpausepercent(100);\n") +
                                 row.pause + "\nEndFunction();";
        const playback::Calibration calibration = timedRun(text, engine::ExecuteType::CorrectTime);
        EXPECT_DOUBLE_EQ(calibration.recorded, 10.5);
        EXPECT_DOUBLE_EQ(calibration.measured, row.measured);
        EXPECT_EQ(session.pausePercent, "100");
        EXPECT_DOUBLE_EQ(session.pauseFactor, 1.0);  // the script's percent plays no part
        EXPECT_EQ(run.rewrite(text, calibration).find(row.rewritten), 41u) << row.pause;
    }
}

TEST_F(TimedRunTest, CountsStatementsAndCtrlOneEndsTheRunEarly) {
    std::vector<int32_t> shown;
    run.countStatements([&](int32_t count) { shown.push_back(count); });
    const std::string text = "Function(Main);\nSetPausePercent(100);\nPause(2000);\nPause(2000);\nEndFunction();";
    timedRun(text, engine::ExecuteType::WhiteDebug);
    // Function(Main) and the three statements, and SetPausePercent once more.
    EXPECT_EQ(shown, (std::vector<int32_t>{1, 2, 3, 4, 5}));

    onWait = [this] { playback.pauseScript(); };
    const playback::Calibration calibration = timedRun(text, engine::ExecuteType::CorrectTime);
    EXPECT_DOUBLE_EQ(calibration.measured, 2);
    EXPECT_TRUE(playback.resumePending());
}

}  // namespace
}  // namespace tarvoke::test
