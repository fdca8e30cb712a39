#include "engine/commands.h"
#include "engine_fixture.h"

namespace tarvoke::test {
namespace {

using Params = std::vector<std::string>;

Params paramsOf(const engine::Statement& statement) {
    Params params;
    for (size_t k = 0; k < statement.parameters.size(); ++k) params.push_back(statement.parameters[k]);
    while (!params.empty() && params.back().empty()) params.pop_back();
    return params;
}

class LoaderTest : public EngineTest {};

// The tables of the worked example: tests/scripts/engine/worked_example.tk.
TEST_F(LoaderTest, TheLoadHandsBackTheNormalisedText) {
    std::string text = "# demo #\nFunction(Main);\n  Int(i, 0);\nEndFunction();\r\nMessage(i, \"A b\");\n";
    engine.initialize(text);
    EXPECT_EQ(text, "function(main);int(i,0);endfunction();message(i,\"A b\");");
}

TEST_F(LoaderTest, StatementSplitting) {
    struct Case {
        const char* text;
        std::vector<std::pair<int32_t, Params>> statements;
    } cases[] = {
        {"", {}},
        {"# only a comment #", {}},
        {"message(hi;there);", {{22, {"hithere"}}}},
        {"message(\"a)b;c\");", {{22, {"\"a)"}}}},
        {"abc;foo(1);", {{-1, {"1"}}}},
        {"message(\"a,b\",normal,\"t\");", {{22, {"\"a", "b\"", "normal", "\"t\""}}}},
        {"foo(1)x;", {{-1, {"1)"}}}},
        {"foo();", {{-1, {}}}},
        {"foo(,);", {{-1, {}}}},  // two empty parameters
        {"pause(1,2,3,4,5,6,7,8,9);", {{101, {}}}},
        {"pause(1,2,3,4,5,6,7,8);", {{101, {"1", "2", "3", "4", "5", "6", "7", "8"}}}},
        {")x(;", {{-1, {}}}},
        {"Combine(a, b); SelectWindow(\"a\", \"b\");", {{12, {"a", "b"}}, {125, {"\"a\"", "\"b\""}}}},
        {"timer(); pause(1) trailing text", {{25, {}}}},
    };
    for (const Case& c : cases) {
        load(c.text);
        ASSERT_EQ(engine.statementCount(), static_cast<int32_t>(c.statements.size())) << c.text;
        for (size_t i = 0; i < c.statements.size(); ++i) {
            EXPECT_EQ(engine.statement(i + 1).number, c.statements[i].first) << c.text;
            EXPECT_EQ(paramsOf(engine.statement(i + 1)), c.statements[i].second) << c.text;
        }
    }
}

TEST_F(LoaderTest, StartAndEndLines) {
    struct Case {
        const char* text;
        int32_t start, end;
    } cases[] = {
        {"", 1, 0},
        {"a(); b();", 1, 0},
        {"function(main); endfunction();", 1, 2},
        {"FUNCTION(MAIN); ENDFUNCTION();", 1, 2},
        {"function(\"main\"); endfunction();", 1, 0},
        {"function(a); endfunction(); function(main); x(); endfunction(); function(b); endfunction();", 3, 5},
        // The last endfunction before the next function closes main.
        {"function(main); endfunction(); endfunction(); function(b); endfunction();", 1, 3},
        // With no main, both counters are 0 before the first function.
        {"endfunction(); function(a); endfunction();", 1, 1},
        // Two mains: the last one starts the run.
        {"function(main); endfunction(); function(main); endfunction();", 3, 4},
    };
    for (const Case& c : cases) {
        load(c.text);
        EXPECT_EQ(engine.startLine(), c.start) << c.text;
        EXPECT_EQ(engine.endLine(), c.end) << c.text;
        EXPECT_EQ(engine.currentLine(), c.start) << c.text;
    }
}

TEST_F(LoaderTest, NamesAndNumbers) {
    // The dump's first names are checked by the builtins' dump test.
    EXPECT_EQ(engine::commandNumber("SelectWindow"), engine::Command::FindWindow);
    for (int32_t id = 100; id <= engine::kLastHostCommand; ++id)  // every host number but 129 and 134 reads back
        if (id != 129 && id != 134) {
            EXPECT_EQ(int32_t(engine::commandNumber(engine::commandName(id))), id) << id;
        }
}

TEST_F(LoaderTest, HexToText) {
    const std::pair<const char*, std::string> cases[] = {
        {"414243", "ABC"}, {"41 42", "AB"}, {"4", std::string("\x04", 1)}, {"2041", "A"},
        {"zz41", std::string("\0A", 2)}, {"", ""},
    };
    for (const auto& [hex, text] : cases) {
        std::string copy = hex;
        EXPECT_EQ(engine::SC::hexToAscii(copy), text) << hex;
    }
}

TEST_F(LoaderTest, LoadClearsWhatTheLastRunLeft) {
    run("int(x, 5); function(f); call(nowhere);");
    EXPECT_TRUE(engine.isExistingVariable("x"));
    load("a();");
    EXPECT_FALSE(engine.isExistingVariable("x"));
    EXPECT_EQ(engine.callDepth(), 0);
    EXPECT_TRUE(engine.functions().empty());
}

}  // namespace
}  // namespace tarvoke::test
