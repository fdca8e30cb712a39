// Correct Time: the scan for the recorded time, the calibration and the
// rewrite of SetPausePercent, and timed runs on a clock the test moves; the
// bytes of a compiled program.

#include <gtest/gtest.h>

#include "host/dispatch.h"
#include "platform/dryrun/dryrun.h"
#include "engine/scripttext.h"
#include "playback/compiledscript.h"
#include "playback/correcttime.h"

namespace tarvoke::test {
namespace {

TEST(CorrectTime, ScanCalibrationAndReplace) {
    const std::pair<const char*, double> scans[] = {
        {"origionalplaytime(5.0);\r\norigionalplaytime(5.5);", 10.5},  // recordings joined add up
        {"origionalplaytime (3);origionalplaytime(\n4);", 4},          // a blank hides; line ends do not
        {"origionalplaytime(x);origionalplaytime();origionalplaytime(2)", 0},  // no number; no ";" after
        {"message(\"a;origionalplaytime(7);b\");", 7},                  // every ";" ends a statement
    };
    for (const auto& [text, sum] : scans) EXPECT_DOUBLE_EQ(playback::origionalPlayTime(text), sum) << text;

    // Seconds, milliseconds, recorded; measured and the new percentage.
    const double calibrations[][5] = {{21, 0, 10.5, 21, 200},   {12, 45, 12.45, 12.45, 100},  // 45 ms read .45
                                      {3, 1234, 6.1234, 3.1234, 3.1234 / 6.1234 * 100},     // a late tick
                                      {0, 0, 10.5, 0, 0},       {7, 5, 0, 7.5, 100}};      // nothing recorded
    for (const auto& row : calibrations) {
        const double measured = playback::measuredTime(int32_t(row[0]), int32_t(row[1]));
        EXPECT_DOUBLE_EQ(measured, row[3]);
        EXPECT_DOUBLE_EQ(playback::newPausePercent(measured, row[2]), row[4]);
    }

    const std::tuple<const char*, const char*, double, const char*> replaces[] = {
        {"a;\nsetpausepercent(100);SETPAUSEPERCENT(100);", "100", 200, "a;\nSetPausePercent(200);SetPausePercent(200);"},
        {"SetPausePercent(50);", "100", 12.5, "SetPausePercent(50);"},
        {"SetPausePercent(100);", "100", 12.5, "SetPausePercent(12.5);"},
    };
    for (const auto& [text, old, percent, result] : replaces)
        EXPECT_EQ(playback::replacePausePercent(text, old, percent), result);
}

// Waits pass at once and move time on; the seconds timer ticks as its
// seconds go by, as the event loop would run it.
class TimedRunTest : public ::testing::Test, public platform::Clock {
protected:
    TimedRunTest() {
        session.platform = roles.platform();
        session.platform.clock = this;
    }
    void yield() override {}
    void cancelWaits() override {}
    int64_t monotonicMs() override { return now; }
    void wait(int32_t ms) override {
        for (int32_t i = 0; i < ms; ++i)
            if (++now - lastSecond == 1000) lastSecond = now, run.secondTick();
        if (onWait) onWait();
    }

    std::string timedRun(std::string text, engine::ExecuteType type) {
        lastSecond = now;
        run.begin(text);
        std::string loaded = text;  // the load normalises it
        run.run(loaded, type);
        return run.rewrite(text, run.finish());
    }

    int64_t now = 5000, lastSecond = 0;
    std::function<void()> onWait;
    platform::dryrun::LineSink sink = [](std::string_view) {};
    platform::dryrun::DryRunPlatform roles{sink, [] {}};
    host::Session session;
    host::HostCommands commands{session};
    engine::SC engine{commands};
    playback::Playback playback{engine, session};
    playback::TimedRun run{engine, playback, session};
};

TEST_F(TimedRunTest, RewritesThePercentTheRunCarriedOut) {
    std::vector<int32_t> lines;
    run.countStatements([&](int32_t count) { lines.push_back(count); });
    const std::string head = "Function(Main);\nORIGIONALPLAYTIME(10.5);\nsetpausepercent(100);\n";
    // The pause, the type, the rewritten statement, the statements counted.
    const std::tuple<const char*, engine::ExecuteType, const char*, size_t> rows[] = {
        {"Pause(21000);", engine::ExecuteType::CorrectTime, "SetPausePercent(200);", 0},
        {"Pause(5250);", engine::ExecuteType::WhiteDebug, "SetPausePercent(50);", 5},  // .250 reads .25
        {"", engine::ExecuteType::CorrectTime, "SetPausePercent(0);", 0},
    };
    for (const auto& [pause, type, rewritten, counted] : rows) {
        lines.clear();
        EXPECT_EQ(timedRun(head + pause + "\nEndFunction();", type), head.substr(0, 41) + rewritten + "\n" + pause +
                                                                         "\nEndFunction();");
        EXPECT_DOUBLE_EQ(session.pauseFactor, 1.0);  // the script's percent plays no part
        // Function(Main) and three statements, and SetPausePercent once more.
        EXPECT_EQ(lines.size(), counted);
    }
    // Ctrl+1 ends the run after the pause in hand; it calibrates on that.
    onWait = [this] { playback.pauseScript(); };
    EXPECT_NE(timedRun(head + "Pause(5250);Pause(9000);EndFunction();", engine::ExecuteType::CorrectTime)
                  .find("SetPausePercent(50);"),
              std::string::npos);
    EXPECT_TRUE(playback.resumePending());
}


TEST(CompiledScript, CompactBodyAndItsLoad) {
    struct Case {
        std::string text, body, loaded;
    };
    const Case cases[] = {
        {"Function(Main);\r\n  MsgBox(\"Hi There; You\");\nEndFunction();", "function(main);msgbox(Hi There; You);endfunction();",
         "function(main);msgbox(Hi There; You);endfunction();"},
        {"A\tB #Note Here# C", "a\tb#notehere#c", "abc"},
        {"", "", ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(playback::compactScript(c.text), c.body) << c.text;
        // The runtime's load folds nothing a second time.
        EXPECT_EQ(engine::stripSource(c.body, engine::SourceForm::Compact), c.loaded) << c.text;
    }
    EXPECT_EQ(playback::bodyAsLines("a(1);msgbox(x;y);"), "a(1);\nmsgbox(x;\ny);\n");
}

TEST(CompiledScript, BytesFieldByField) {
    const std::string runtime = "RUNTIMEZ";  // L = 8; its last byte gives way to the flag
    for (const bool repeat : {false, true}) {
        const std::string program = playback::compiledProgram(runtime, repeat, "a();");
        EXPECT_EQ(program.size(), 8u + 4u + 4u);
        EXPECT_EQ(program.substr(0, 7), "RUNTIME");
        EXPECT_EQ(program[7], repeat ? '1' : '0');
        EXPECT_EQ(program.substr(8, 4), "a();");
        EXPECT_EQ(program.substr(12), std::string("\x08\x00\x00\x00", 4));
        const auto tail = playback::compiledTailOf(program);
        ASSERT_TRUE(tail);
        EXPECT_EQ(tail->flag, repeat ? '1' : '0');
        EXPECT_EQ(tail->body, "a();");
    }
    EXPECT_EQ(playback::compiledProgram(std::string(300, 'x'), false, "").substr(300), std::string("\x2c\x01\x00\x00", 4));
}

TEST(CompiledScript, TailOutOfRangeIsNoScript) {
    const std::string corrupt[] = {"", "abc", std::string("\0\0\0\0", 4), std::string("xy\x03\x00\x00\x00", 6),
                                   std::string("xy\xff\xff\xff\xff", 6), "plain script text;"};
    for (const std::string& file : corrupt) EXPECT_FALSE(playback::compiledTailOf(file)) << file.size();
    EXPECT_TRUE(playback::compiledTailOf(std::string("xy\x02\x00\x00\x00", 6)));  // an empty body
}
}  // namespace
}  // namespace tarvoke::test
