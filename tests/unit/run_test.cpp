#include "engine_fixture.h"

namespace tarvoke::test {
namespace {

class RunTest : public EngineTest {
protected:
    // Runs a script and gives the lines it ran, in order.
    std::vector<int32_t> linesVisited(const std::string& text) {
        std::vector<int32_t> lines;
        engine.setExecuteType(engine::ExecuteType::WhiteDebug);
        engine.setStatementCounter([&] { lines.push_back(engine.currentLine()); });
        run(text);
        return lines;
    }
    // message(x, normal, t) leaves "x" in the transcript; gives all of them.
    std::vector<std::string> shown() {
        std::vector<std::string> texts;
        for (const std::string& line : fake.transcript) {
            const size_t cut = line.rfind(" \"");
            texts.push_back(line.substr(cut + 2, line.size() - cut - 3));
        }
        return texts;
    }
};

const char* kTrace =
    "Function(Main); Int(i, 0); While(i<2); Add(i, 1); Call(Show); EndWhile(); EndFunction();"
    "Function(Show); Message(i, normal, \"Confirm Recording\"); EndFunction();";

TEST_F(RunTest, TheTraceVisitsItsLines) {
    const auto lines = linesVisited(kTrace);
    EXPECT_EQ(engine.statementCount(), 10);
    EXPECT_EQ(engine.startLine(), 1);
    EXPECT_EQ(engine.endLine(), 7);
    EXPECT_EQ(lines, (std::vector<int32_t>{1, 2, 3, 4, 5, 8, 9, 10, 6, 3, 4, 5, 8, 9, 10, 6, 3}));
    EXPECT_EQ(fake.transcript, (std::vector<std::string>{"MessageBox 0 \"Confirm Recording\" \"1\"",
                                                         "MessageBox 0 \"Confirm Recording\" \"2\""}));
    EXPECT_EQ(engine.callDepth(), 0);
}

TEST_F(RunTest, EveryStatementYieldsFirst) {
    run("a(); b(); c();");
    // The loop yields before it looks whether the line is past the end.
    EXPECT_EQ(fake.yields, 4);
}

TEST_F(RunTest, ControlFlow) {
    struct Case {
        const char* name;
        const char* script;
        std::vector<std::string> shown;
    } cases[] = {
        {"main first ends at its endfunction",
         "function(main); message(a,normal,t); endfunction(); function(f); message(f,normal,t); endfunction();", {"a"}},
        {"functions before main", "function(f); message(f,normal,t); endfunction(); function(main); message(m,normal,t); endfunction();", {"m"}},
        {"no main runs from line 1", "message(a,normal,t); message(b,normal,t);", {"a", "b"}},
        {"no main falls into a function tail and ends",
         "message(a,normal,t); function(f); message(b,normal,t); endfunction(); message(c,normal,t);", {"a", "b"}},
        {"call of an unknown function goes on", "function(main); call(none); message(a,normal,t); endfunction();", {"a"}},
        {"unknown call inside a function runs its tail twice",
         "function(main); call(f); message(end,normal,t); endfunction();"
         "function(f); call(none); message(tail,normal,t); endfunction();",
         {"tail", "tail", "end"}},
        {"the first of two functions wins",
         "function(main); call(f); endfunction(); function(f); message(1,normal,t); endfunction();"
         "function(f); message(2,normal,t); endfunction();", {"1"}},
        {"recursion",
         "function(main); int(n,0); call(r); endfunction(); function(r); add(n,1);"
         "if(n<4); call(r); endif(); message(n,normal,t); endfunction();", {"4", "4", "4", "4"}},
        {"else after a true if skips nested blocks",
         "function(main); if(1=1); message(a,normal,t); if(1=2); message(b,normal,t); else(); message(c,normal,t); endif();"
         "else(); message(d,normal,t); endif(); message(e,normal,t); endfunction();", {"a", "c", "e"}},
        {"a false if skips nested complete blocks",
         "function(main); if(1=2); if(1=1); message(a,normal,t); else(); message(b,normal,t); endif(); else();"
         "message(c,normal,t); endif(); message(d,normal,t); endfunction();", {"c", "d"}},
        {"a false if with no endif ends the run", "function(main); if(1=2); message(a,normal,t); endfunction();", {}},
        {"endwhile without while ends the run", "function(main); message(a,normal,t); endwhile(); message(b,normal,t); endfunction();", {"a"}},
        {"a stray else ends the run without endif", "message(a,normal,t); else(); message(b,normal,t);", {"a"}},
        {"nested whiles",
         "function(main); int(i,0); while(i<2); add(i,1); int(j,0); while(j<2); add(j,1); message(j,normal,t);"
         "endwhile(); endwhile(); endfunction();", {"1", "2", "1", "2"}},
        {"if and while nest apart",
         "function(main); int(i,0); while(i<3); add(i,1); if(i=2); message(two,normal,t); endif(); endwhile(); message(done,normal,t); endfunction();",
         {"two", "done"}},
        {"a skip never examines the last statement", "if(1=2); message(a,normal,t); endif();", {}},
    };
    for (const Case& c : cases) {
        fake.transcript.clear();
        run(c.script);
        EXPECT_EQ(shown(), c.shown) << c.name;
    }
}

TEST_F(RunTest, WhiteDebugCountsStatementsRunNotSkipped) {
    const auto lines = linesVisited("function(main); if(1=2); a(); b(); endif(); c(); endfunction();");
    // function, if (the skip lands on endif, and the loop steps past it), c;
    // the line that ends the run is not counted.
    EXPECT_EQ(lines, (std::vector<int32_t>{1, 2, 6}));
}

TEST_F(RunTest, ACallBeyondTheDeepestFailsAndTheRunGoesOn) {
    run("Function(Main); Int(n, 0); Call(f); Message(n, normal, t); EndFunction();"
        "Function(f); Add(n, 1); Call(f); EndFunction();");
    EXPECT_EQ(shown(), (std::vector<std::string>{std::to_string(engine::SC::kMaxCallDepth)}));
    EXPECT_EQ(engine.callDepth(), 0);
}

// A hotkey handled inside a yield: a stop before int(b) moves the line back
// to main's function statement, which runs instead; a pause before int(a)
// lets it run and ends the run on the line after it.
TEST_F(RunTest, StopOrPauseDuringAYield) {
    for (const bool stop : {true, false}) {
        fake.onYield = [&, yields = 0]() mutable {
            if (++yields == (stop ? 3 : 2)) stop ? engine.stopExecution() : engine.pauseExecution();
        };
        run("function(main); int(a,1); int(b,2); int(c,3); endfunction();");
        EXPECT_TRUE(engine.isExistingVariable("a")) << stop;
        EXPECT_FALSE(engine.isExistingVariable("b")) << stop;
        EXPECT_EQ(engine.currentLine(), stop ? 2 : 3) << stop;
    }
}

}  // namespace
}  // namespace tarvoke::test
