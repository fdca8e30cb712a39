// The engine: number texts and the source's layout; on the fake platform,
// the load's statements and tables, its loops, calls and conditions, how
// parameters resolve, the built-in commands on variables, and the host
// commands; the SendKeys notation.

#include <cmath>
#include <limits>

#include "engine/commands.h"
#include "engine/numeric.h"
#include "engine/scripttext.h"
#include "engine_fixture.h"
#include "host/sendkeys.h"

namespace tarvoke::test {
namespace {

using namespace engine;  // the number texts' functions

TEST(NumericText, RecognisesWholeNumbersOnly) {
    const std::pair<const char*, bool> cases[] = {
        {"5", true},     {"-5", true},    {"+5", true},     {"2.5", true},   {".5", true},  {"5.", true},
        {"1e5", true},   {"1.5e-3", true}, {"&hff", true},  {"&HFF", true},  {" 7 ", true}, {"", false},
        {"abc", false},  {"12abc", false}, {"1.2.3", false}, {"-", false},    {".", false},  {"1e", false},
        {"&h", false},   {"1 2", false},  {"0x41", false},
    };
    for (const auto& [text, numeric] : cases) EXPECT_EQ(isNumericText(text), numeric) << text;
}

TEST(NumericText, PrefixReadingTakesTheLongestNumberAndSkipsBlanks) {
    const std::pair<const char*, double> cases[] = {
        {"12abc", 12}, {"abc", 0},     {"", 0},        {" 1 2 3", 123}, {"1.5e3x", 1500},
        {"1e", 1},     {"-2.5", -2.5}, {"&hFFFF", 65535}, {"&hffffffff", 4294967295.0}, {"1.2.3", 1.2},
        {"&hzz", 0},   {"--1", 0},
    };
    for (const auto& [text, value] : cases) EXPECT_DOUBLE_EQ(readNumericPrefix(text), value) << text;
}

TEST(Rounding, TiesGoToTheEvenNeighbour) {
    const std::pair<double, int32_t> cases[] = {{2.5, 2}, {3.5, 4}, {-2.5, -2}, {0.5, 0}, {1.5, 2}, {2.4999, 2}, {-0.6, -1}};
    for (const auto& [value, rounded] : cases) EXPECT_EQ(roundToInt32(value), rounded) << value;
    EXPECT_EQ(roundToInt32(2147483647.4), 2147483647);
    EXPECT_FALSE(roundToInt32(2147483647.5));
    EXPECT_FALSE(roundToInt32(std::nan("")));
    EXPECT_FALSE(roundToInt16(32767.5));
    EXPECT_EQ(roundToInt16(-32768.4), -32768);
}

// Rounding and the byte's and 16-bit bounds through the commands: the key
// and Ex rows of the host tests below; textToLong: the builtins' cases.
TEST(Conversions, FailOnEmptyNonNumericAndOutOfRange) {
    EXPECT_EQ(textToByte("255"), 255);
    EXPECT_EQ(textToInt16("-32768"), -32768);
    EXPECT_FALSE(textToInt16("lx"));
    EXPECT_EQ(textToInt32(" 1e3 "), 1000);
    EXPECT_FALSE(textToInt32("12abc"));
    EXPECT_EQ(textToDouble("2.5"), 2.5);
    EXPECT_FALSE(textToDouble("1e400"));
    // A double becomes a long through its printed text.
    EXPECT_EQ(doubleToLong(2.5), 2);
    EXPECT_EQ(doubleToLong(0.5000000000000001), 0);  // prints as 0.5, a tie
    EXPECT_FALSE(doubleToLong(1e20));
    EXPECT_FALSE(doubleToLong(std::numeric_limits<double>::infinity()));
}

// Lowering, tabs and blanks, UTF-8, line ends and comments: tests/scripts/engine/layout_crlf.tk.
TEST(stripSource, CommentsQuotesBlanksAndCase) {
    EXPECT_EQ(stripSource("message(\"a#b\");#x#y"), "message(\"ax");  // the quote stays open through the comment
    EXPECT_EQ(stripSource("# open to the end"), "");
}

using Params = std::vector<std::string>;

Params paramsOf(const engine::Statement& statement) {
    Params params;
    for (size_t k = 0; k < statement.parameters.size(); ++k) params.push_back(statement.parameters[k]);
    while (!params.empty() && params.back().empty()) params.pop_back();
    return params;
}

// The tables of the worked example: tests/scripts/engine/worked_example.tk.
TEST_F(EngineTest, TheLoadHandsBackTheNormalisedText) {
    std::string text = "# demo #\nFunction(Main);\n  Int(i, 0);\nEndFunction();\r\nMessage(i, \"A b\");\n";
    engine.initialize(text);
    EXPECT_EQ(text, "function(main);int(i,0);endfunction();message(i,\"A b\");");
}

TEST_F(EngineTest, StatementSplitting) {
    // The text, and each statement's number and parameters.
    const std::pair<const char*, std::vector<std::pair<int32_t, Params>>> cases[] = {
        {"", {}}, {"# only a comment #", {}}, {"message(hi;there);", {{22, {"hithere"}}}},
        {"message(\"a)b;c\");", {{22, {"\"a)"}}}}, {"abc;foo(1);", {{-1, {"1"}}}},
        {"message(\"a,b\",normal,\"t\");", {{22, {"\"a", "b\"", "normal", "\"t\""}}}},
        {"foo(1)x;", {{-1, {"1)"}}}}, {"foo();", {{-1, {}}}},
        {"foo(,);", {{-1, {}}}},  // two empty parameters
        {"pause(1,2,3,4,5,6,7,8,9);", {{101, {}}}},
        {"pause(1,2,3,4,5,6,7,8);", {{101, {"1", "2", "3", "4", "5", "6", "7", "8"}}}},
        {")x(;", {{-1, {}}}},
        {"timer(); pause(1) trailing text", {{25, {}}}},
    };
    for (const auto& [text, statements] : cases) {
        load(text);
        ASSERT_EQ(engine.statementCount(), static_cast<int32_t>(statements.size())) << text;
        for (size_t i = 0; i < statements.size(); ++i) {
            EXPECT_EQ(engine.statement(i + 1).number, statements[i].first) << text;
            EXPECT_EQ(paramsOf(engine.statement(i + 1)), statements[i].second) << text;
        }
    }
}

// A load also clears the call depth a run left. (The variables and functions
// a run leaves would change the next case in Conditions and ControlFlow; the
// depth of a call that went nowhere would not.)
TEST_F(EngineTest, StartAndEndLinesAndTheCallDepth) {
    run("function(f); call(nowhere);");
    const std::tuple<const char*, int32_t, int32_t> cases[] = {  // the text, the start and end lines
        {"", 1, 0}, {"a(); b();", 1, 0}, {"function(main); endfunction();", 1, 2},
        {"FUNCTION(MAIN); ENDFUNCTION();", 1, 2}, {"function(\"main\"); endfunction();", 1, 0},
        {"function(a); endfunction(); function(main); x(); endfunction(); function(b); endfunction();", 3, 5},
        // The last endfunction before the next function closes main.
        {"function(main); endfunction(); endfunction(); function(b); endfunction();", 1, 3},
        // With no main, both counters are 0 before the first function.
        {"endfunction(); function(a); endfunction();", 1, 1},
        // Two mains: the last one starts the run.
        {"function(main); endfunction(); function(main); endfunction();", 3, 4},
    };
    for (const auto& [text, start, end] : cases) {
        load(text);
        EXPECT_EQ(engine.startLine(), start) << text;
        EXPECT_EQ(engine.endLine(), end) << text;
        EXPECT_EQ(engine.currentLine(), start) << text;
        EXPECT_EQ(engine.callDepth(), 0) << text;
    }
}

// Aliases such as SelectWindow: variables_dump.tk and host/dry_run.tk.
TEST_F(EngineTest, NamesAndNumbers) {
    for (int32_t id = 100; id <= engine::kLastHostCommand; ++id)  // every host number but 129 and 134 reads back
        if (id != 129 && id != 134) {
            EXPECT_EQ(int32_t(engine::commandNumber(engine::commandName(id))), id) << id;
        }
}

// Whole pairs, blanks between and around: layout_crlf.tk.
TEST_F(EngineTest, HexToText) {
    std::string odd = "4", notHex = "zz41", empty;
    EXPECT_EQ(engine::SC::hexToAscii(odd), std::string("\x04", 1));
    EXPECT_EQ(engine::SC::hexToAscii(notHex), std::string("\0A", 2));
    EXPECT_EQ(engine::SC::hexToAscii(empty), "");
}

using enum engine::ValueKind;

class BuiltinsTest : public EngineTest {
protected:
    // Each case runs a script and reads one variable back, with its type.
    struct Case {
        const char* script;
        const char* variable;
        engine::ValueKind type;
        const char* value;
    };
    void checkAll(std::initializer_list<Case> cases) {
        for (const Case& c : cases) {
            run(c.script);
            EXPECT_EQ(typeOf(c.variable), c.type) << c.script;
            EXPECT_EQ(valueOf(c.variable), c.value) << c.script;
        }
    }
};

TEST_F(BuiltinsTest, Declarations) { checkAll({
    // More in tests/scripts/engine: layout_crlf.tk (0x texts), variables_dump.tk.
    {"int(x, 99999999999);", "x", Long, "0"},  // first: too large, it leaves the value slot as a new engine has it
    {"string(x, 5);", "x", Text, "5"}, {"double(x, abc);", "x", Double, "0"}, {"int(x);", "x", Long, "0"},
    {"string(x, \"0X41\");", "x", Text, "0X41"},  // hex only after a lower-case 0x
    {"int(x, 9); int(x, 3);", "x", Long, "3"}, {"set(x, 5);", "x", Long, "5"}, {"set(x, 2.5);", "x", Double, "2.5"},
    {"set(x, abc);", "x", Text, "abc"}, {"set(x, \"5\");", "x", Long, "5"},
    {"int(x, 1); set(x, 2.5);", "x", Long, "1"},     // the double stands behind the long
    {"string(x, a); set(x, 5);", "x", Text, "a"}, {"double(b, 5.5); set(a, b);", "a", Double, "5.5"},
    {"double(b, 5); set(a, b);", "a", Long, "5"}}); }

// How numbers read and print: the double forms (plain up to 15 digits, then
// exponent), rounding half to even, exponent and &h forms, numeric prefixes,
// and the edges of a long.
TEST_F(BuiltinsTest, NumberText) { checkAll({
    {"double(a, 0.000001);", "a", Double, "1E-06"}, {"double(a, 0.00001);", "a", Double, "0.00001"},
    {"double(a, 1.5e20);", "a", Double, "1.5E+20"}, {"double(a, 999999999999999.9);", "a", Double, "1E+15"},
    {"double(a, 123456789012345.0);", "a", Double, "123456789012345"},
    {"double(a, 0.1); add(a, 0.2);", "a", Double, "0.3"},
    {"double(a, 2); divide(a, 3);", "a", Double, "0.666666666666667"}, {"int(a, 3.5);", "a", Long, "4"},
    {"int(a, -2.5);", "a", Long, "-2"}, {"int(a, 1e5);", "a", Long, "100000"},
    {"int(a, &h7FFFFFFF);", "a", Long, "2147483647"}, {"int(a, 12abc);", "a", Long, "12"},
    {"int(a, -2147483648); subtract(a, 1);", "a", Long, "-2147483648"},
    {"double(a, -0.5); multiply(a, 0);", "a", Double, "0"}, {"double(a, 0); divide(a, 0);", "a", Double, "nan"},
    {"double(a, -1); divide(a, 0);", "a", Double, "-inf"}, {"double(a, \" 2.5\");", "a", Double, "2.5"},
    {"int(a, 0x10);", "a", Long, "0"}}); }

TEST_F(BuiltinsTest, Arithmetic) { checkAll({
    {"add(u, 1); add(u, 1);", "u", Text, "11"}, {"int(x, 10); add(x, 2.5);", "x", Long, "12"},
    {"int(x, 7); divide(x, 2);", "x", Long, "4"}, {"int(x, 5); divide(x, 2);", "x", Long, "2"},
    {"int(x, 5); divide(x, 0);", "x", Long, "5"}, {"int(x, 2147483647); add(x, 1);", "x", Long, "2147483647"},
    {"int(x, 65536); multiply(x, 65536);", "x", Long, "65536"}, {"int(x, 10); subtract(x, 12abc);", "x", Long, "-2"},
    {"double(d, 1.0e300); multiply(d, 1.0e300);", "d", Double, "inf"},
    {"double(d, 1.5); multiply(d, 2);", "d", Double, "3"}, {"int(x, 3); power(x, 2);", "x", Long, "9"},
    {"int(x, 9); power(x, 0.5);", "x", Long, "1"}, {"double(d, 9); power(d, 0.5);", "d", Double, "3"},
    {"int(x, 0); power(x, -1);", "x", Long, "0"}, {"double(d, 0); power(d, -1);", "d", Double, "0"},
    {"double(d, -8); power(d, 0.5);", "d", Double, "-8"}, {"int(x, 3); power(x, abc);", "x", Long, "3"},
    {"string(s, ab); power(s, 2);", "s", Text, "ab"}, {"string(s, ab); multiply(s, 3);", "s", Text, "ababab"},
    {"string(s, ab); multiply(s, 0);", "s", Text, ""}, {"string(s, ab); multiply(s, 40000);", "s", Text, "ab"},
    {"string(s, ab); multiply(s, cd);", "s", Text, "abcd"}, {"string(s, 1a1b); subtract(s, 1);", "s", Text, "ab"},
    {"string(s, banana); divide(s, \"a\");", "s", Text, "bnn"},
    {"string(s, ab); subtract(s, \"\");", "s", Text, "ab"}, {"string(s, x); combine(s, 2.5);", "s", Text, "x2.5"},
    {"string(s, \"aXa\"); removeall(s, a);", "s", Text, "X"}}); }

TEST_F(BuiltinsTest, Functions) { checkAll({
    {"int(x, 5); factorial(x);", "x", Long, "120"}, {"int(x, 0); factorial(x);", "x", Long, "1"},
    {"int(x, -3); factorial(x);", "x", Long, "1"}, {"double(d, 3.5); factorial(d);", "d", Double, "24"},
    {"int(x, 13); factorial(x);", "x", Long, "13"}, {"double(d, 171); factorial(d);", "d", Double, "171"},
    {"double(d, 40000); factorial(d);", "d", Double, "40000"}, {"string(s, 5); factorial(s);", "s", Text, "5"},
    {"int(x, 2); sin(x);", "x", Long, "1"}, {"double(d, 0); cos(d);", "d", Double, "1"},
    {"double(d, 1); log(d);", "d", Double, "0"}, {"int(x, 0); log(x);", "x", Long, "0"},
    {"double(d, -1); log(d);", "d", Double, "-1"}, {"string(s, 1); tan(s);", "s", Text, "1"},
    {"int(x, 1); tan(x);", "x", Long, "2"}}); }

TEST_F(BuiltinsTest, Text) { checkAll({
    {"string(s, abcdef); parse(s, 2, 3);", "s", Text, "bcd"}, {"string(s, abcdef); parse(s, 9, 3);", "s", Text, ""},
    {"string(s, abcdef); parse(s, 2, 0);", "s", Text, ""},
    {"string(s, abcdef); parse(s, 0, 3);", "s", Text, "abcdef"},
    {"string(s, abcdef); parse(s, 2);", "s", Text, "abcdef"},
    {"string(s, abcdef); parse(s, x, 2);", "s", Text, "abcdef"}, {"int(x, 5); parse(x, 1, 1);", "x", Long, "5"},
    {"string(s, abab); for(s, a, b);", "s", Text, "bbbb"}, {"string(s, abab); replace(s, ab, x);", "s", Text, "xx"},
    {"string(s, abc); replace(s, \"\", x);", "s", Text, "abc"},
    {"string(s, aaa); replace(s, aa, a);", "s", Text, "aa"}, {"parse(0x414243, 1, 2);", "0x414243", Text, "0x"}}); }

TEST_F(BuiltinsTest, ATextNeverOutgrowsTheLimit) {
    // Steps that would pass the limit fail and leave the text; those that
    // reach it exactly succeed. Without the limit a loop of Multiply grows a
    // text until memory runs out.
    engine.setMaxTextBytes(8);
    const std::pair<const char*, const char*> cases[] = {
        {"string(s, abcd); multiply(s, 2);", "abcdabcd"}, {"string(s, abcd); multiply(s, 3);", "abcd"},
        {"string(s, abcd); add(s, efgh); add(s, i);", "abcdefgh"}, {"string(s, abcd); multiply(s, efghi);", "abcd"},
        {"string(s, aaaa); replace(s, a, bb);", "bbbbbbbb"}, {"string(s, aaaaa); replace(s, a, bb);", "aaaaa"},
    };
    for (const auto& [script, value] : cases) {
        run(script);
        EXPECT_EQ(valueOf("s"), value) << script;
    }
}

TEST_F(BuiltinsTest, AStopCutsALongTextStepShort) {
    // 16 MB: long enough to be built in pieces with a look at the stop
    // between them. The stop comes once go exists.
    session.stopRequested = [this] { return engine.isExistingVariable("go"); };
    std::string script = "string(x, a);";
    for (int i = 0; i < 24; ++i) script += "combine(x, x);";
    run(script + "int(go, 1); combine(x, x); replace(x, a, bb); string(y, x); multiply(x, 3);");
    EXPECT_EQ(valueOf("x").size(), size_t{1} << 24);
    EXPECT_FALSE(engine.isExistingVariable("y"));
}

TEST_F(BuiltinsTest, TheDumpComesInPiecesAndEndsOnAStop) {
    EXPECT_EQ(engine.getDebug(), "Printing Code:\n\nPrinting Found Functions:\n\nPrinting Found Variables:\n\n\n\n");
    run("string(big, a); multiply(big, 30000); multiply(big, 10); int(n, 7);");
    std::string whole;
    int pieces = 0;
    ASSERT_TRUE(engine.writeDebug([&](std::string_view piece) {
        whole += piece;
        ++pieces;
    }));
    EXPECT_EQ(whole, engine.getDebug());
    EXPECT_GT(pieces, 3);
    EXPECT_NE(whole.find("Long: n, value: 7\n"), std::string::npos);
    session.stopRequested = [] { return true; };
    pieces = 0;
    EXPECT_FALSE(engine.writeDebug([&](std::string_view) { ++pieces; }));
    EXPECT_EQ(pieces, 1);
}

TEST_F(EngineTest, Conditions) {
    const std::tuple<const char*, const char*, bool> cases[] = {  // what runs first, the condition, its result
        {"int(x,5);", "x=5", true}, {"double(x,5.5);", "x=5", false},
        {"string(x,5);", "x=5", true},  // compared as text
        {"int(x,5);", "x", false},       // no operator
        {"", "a=b=c", false},            // right side "b=c"
        {"string(a,\"b=c\");", "a=b=c", true}, {"", "1<=1", true},
        {"", "1=<1", false},             // "=" with the right side "<1"
        {"string(s,\"abc\");", "s=\"Abc\"", false},
        {"string(s,\"abc\");", "s=abc", true},  // as a script writes s=Abc: the load lowers it
        {"", "2<10", true}, {"", "3<>4", true}, {"", "3!=3", false}, {"", "b>=a", true},
        {"", "\"2\"<\"10\"", false},      // as text
        {"int(n,2);", "n<\"10\"", false}, // text against number: as text
        {"double(d,2.5);", "d>2", true},  // long against double
        {"", "99999999999=1", false},     // beyond 32 bits: false
        {"", "\"=\"", false},             // a lone quote on each side
        {"", "=", true},                  // two empty texts
    };
    for (const auto& [setup, condition, result] : cases) {
        run(setup);
        EXPECT_EQ(engine.evaluate(condition), result) << setup << " " << condition;
    }
}

TEST_F(EngineTest, ResolvingParameters) {
    // lx and ly read the last position before the tables, though set(lx, 5) made a variable.
    session.lastX = 12;
    session.lastY = -3;
    run("string(s, abc); int(l, 7); double(d, 2.5); set(lx, 5);");
    EXPECT_TRUE(engine.isExistingVariable("lx"));
    const std::tuple<const char*, engine::ValueKind, const char*> cases[] = {  // the parameter, its kind and text
        {"s", Text, "abc"}, {"l", Long, "7"}, {"d", Double, "2.5"}, {"5", Long, "5"}, {"2.5", Double, "2.5"},
        {"word", Text, "word"}, {"\"s\"", Text, "s"}, {"$s", Text, "s"}, {"", Text, ""}, {"0x41", Text, "0x41"},
        {"1e3", Long, "1e3"}, {"lx", Long, "12"}, {"ly", Long, "-3"},
    };
    for (const auto& [parameter, kind, asText] : cases) {
        EXPECT_EQ(typeOf(parameter), kind) << parameter;
        EXPECT_EQ(engine.getVariableAsString(parameter), asText) << parameter;
    }
    // That getVariable decodes 0x texts and unquotes in place: layout_crlf.tk and repeat_keeps_state.tk.
    // A number too large for a long fails and leaves the last long in the slot.
    std::string five = "5", huge = "99999999999";
    engine.getVariable(five);
    engine.getVariable(huge);
    EXPECT_EQ(engine.valueSlot().kind, Long);
    EXPECT_EQ(engine.valueSlot().integer, 5);
}

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
    // msgbox(x) and message(x, normal, t) leave "x" in the transcript; gives all of them.
    std::vector<std::string> shown() {
        std::vector<std::string> texts;
        for (const std::string& line : fake.transcript) {
            const size_t cut = line.rfind(" \"");
            texts.push_back(line.substr(cut + 2, line.size() - cut - 3));
        }
        return texts;
    }
};

// What the loop and the call show: examples/demo.tk.
TEST_F(RunTest, TheTraceVisitsItsLines) {
    EXPECT_EQ(linesVisited("Function(Main); Int(i, 0); While(i<2); Add(i, 1); Call(Show); EndWhile(); EndFunction();"
                           "Function(Show); Message(i, normal, \"Confirm Recording\"); EndFunction();"),
              (std::vector<int32_t>{1, 2, 3, 4, 5, 8, 9, 10, 6, 3, 4, 5, 8, 9, 10, 6, 3}));
    EXPECT_EQ(engine.callDepth(), 0);
    // Statements run, not those skipped: function, if (the skip lands on
    // endif, and the loop steps past it), c; the line that ends the run is
    // not counted.
    EXPECT_EQ(linesVisited("function(main); if(1=2); a(); b(); endif(); c(); endfunction();"),
              (std::vector<int32_t>{1, 2, 6}));
}

TEST_F(RunTest, ControlFlow) {
    // What each case checks, its script, and the texts its messages show.
    const std::tuple<const char*, const char*, std::vector<std::string>> cases[] = {
        {"main first ends at its endfunction",
         "function(main); msgbox(a); endfunction(); function(f); msgbox(f); endfunction();", {"a"}},
        {"functions before main", "function(f); msgbox(f); endfunction(); function(main); msgbox(m); endfunction();", {"m"}},
        {"no main runs from line 1", "msgbox(a); msgbox(b);", {"a", "b"}},
        {"no main falls into a function tail and ends", "msgbox(a); function(f); msgbox(b); endfunction(); msgbox(c);",
         {"a", "b"}},
        {"call of an unknown function goes on", "function(main); call(none); msgbox(a); endfunction();", {"a"}},
        {"unknown call inside a function runs its tail twice",
         "function(main); call(f); msgbox(end); endfunction(); function(f); call(none); msgbox(tail); endfunction();",
         {"tail", "tail", "end"}},
        {"the first of two functions wins",
         "function(main); call(f); endfunction(); function(f); msgbox(1); endfunction(); function(f); msgbox(2);"
         "endfunction();", {"1"}},
        {"recursion",
         "function(main); int(n,0); call(r); endfunction(); function(r); add(n,1); if(n<4); call(r); endif(); msgbox(n);"
         "endfunction();", {"4", "4", "4", "4"}},
        {"else after a true if skips nested blocks",
         "function(main); if(1=1); msgbox(a); if(1=2); msgbox(b); else(); msgbox(c); endif(); else(); msgbox(d);"
         "endif(); msgbox(e); endfunction();", {"a", "c", "e"}},
        {"a false if skips nested complete blocks",
         "function(main); if(1=2); if(1=1); msgbox(a); else(); msgbox(b); endif(); else(); msgbox(c); endif();"
         "msgbox(d); endfunction();", {"c", "d"}},
        {"a false if with no endif ends the run", "function(main); if(1=2); msgbox(a); endfunction();", {}},
        {"endwhile without while ends the run", "function(main); msgbox(a); endwhile(); msgbox(b); endfunction();", {"a"}},
        {"a stray else ends the run without endif", "msgbox(a); else(); msgbox(b);", {"a"}},
        {"nested whiles",
         "function(main); int(i,0); while(i<2); add(i,1); int(j,0); while(j<2); add(j,1); msgbox(j); endwhile();"
         "endwhile(); endfunction();", {"1", "2", "1", "2"}},
        {"if and while nest apart",
         "function(main); int(i,0); while(i<3); add(i,1); if(i=2); msgbox(two); endif(); endwhile(); msgbox(done);"
         "endfunction();", {"two", "done"}},
        {"a skip never examines the last statement", "if(1=2); msgbox(a); endif();", {}},
    };
    for (const auto& [name, script, texts] : cases) {
        fake.transcript.clear();
        run(script);
        EXPECT_EQ(shown(), texts) << name;
    }
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

// Host commands against the fake platform: each case is a script and the
// operations it makes, as the dry run prints them (handles decimal).

using Lines = std::vector<std::string>;

struct Case {
    const char* name;
    const char* script;
    Lines expected;
};

class HostTest : public EngineTest {
protected:
    HostTest() {
        notepad = fake.windows.addWindow("notepad", "Untitled - Notepad");
        edit = fake.windows.addWindow("edit", "", notepad);
        fake.windows.addWindow("other", "x");
        fake.windows.addWindow("summer", "\u00e9t\u00e9 \u0101\u013a");
    }
    Lines play(const std::string& script) {
        fake.transcript.clear();
        run(script);
        return fake.transcript;
    }
    void checkAll(std::initializer_list<Case> cases) {
        for (const Case& c : cases) {
            session.targetWindow = 0;
            session.lastX = session.lastY = 0;
            session.pauseFactor = 1.0;
            session.ignorePauses = false;
            EXPECT_EQ(play(c.script), c.expected) << c.name << ": " << c.script;
        }
    }
    platform::WindowId notepad = 0, edit = 0;
};

// Each button, click and Ex flag, and the screen's centre: examples/host_commands.tk.
// A plain button notes the cursor, message styles: tests/scripts/host/dry_run.tk.
TEST_F(HostTest, MouseAndKeysOnTheInputStream) { checkAll({
    {"a missing y does nothing, not even the move", "LeftDownEx(10);", {}},
    {"Ex is 16-bit, MoveMouse 32-bit", "LeftDownEx(40000, 10); MoveMouse(40000, 10);", {"SetCursorPos 40000 10"}},
    {"bad numbers move nothing", "MoveMouse(abc, 1); MoveMouse(1); MoveMouse(\"lx\", 5);", {}},
    {"key codes are bytes rounded to even", "KeyDown(256); KeyDown(-1); KeyDown(); KeyDown(65.5); KeyUp(64.5);",
     {"keybd_event 66 0", "keybd_event 64 2"}},
    {"moves leave lx and ly", "LeftDownEx(5, 6); MoveMouse(10, 20); MoveMouseToCenterScreen(); LeftUpEx(lx, ly);",
     {"SetCursorPos 5 6", "mouse_event 2", "SetCursorPos 10 20", "SetCursorPos 960 540", "SetCursorPos 5 6",
      "mouse_event 4"}},
    {"quoted lx goes through ResolveCoordinate", "LeftDownEx(7, 8); LeftDownEx(\"lx\", 5);",
     {"SetCursorPos 7 8", "mouse_event 2", "SetCursorPos 7 5", "mouse_event 2"}},
    {"lx and ly can be crossed", "LeftDownEx(3, 4); LeftUpEx(ly, lx);",
     {"SetCursorPos 3 4", "mouse_event 2", "SetCursorPos 4 3", "mouse_event 4"}},
    {"parameters resolve through variables", "String(s, \"42\"); Int(n, 7); KeyDown(s); KeyUp(n); KeyDown($9);",
     {"keybd_event 42 0", "keybd_event 7 2", "keybd_event 9 0"}},
    {"a rejected key string sends nothing", "SendKeys(\"{FOO}\"); SendKeys(\"(a\");", {}}}); }

TEST_F(HostTest, TargetWindow) { checkAll({
    {"Ex buttons send the position in pixels of 15 twips",
     "SelectWindow(notepad); LeftDownEx(300, 150); LeftUpEx(-30, 0); RightDownEx(1,1); RightUpEx(1,1);"
     " MiddleDownEx(1,1); MiddleUpEx(1,1);",
     {"FindWindow \"notepad\" null", "SendMessage 1001 513 0 0x000A0014", "SendMessage 1001 514 0 0x0000FFFE",
      "SendMessage 1001 516 0 0x00000000", "SendMessage 1001 517 0 0x00000000", "SendMessage 1001 519 0 0x00000000",
      "SendMessage 1001 520 0 0x00000000"}},
    {"the target leaves lx, ly and the cursor", "SelectWindow(notepad); LeftDownEx(300, 150); MoveMouse(lx, ly);",
     {"FindWindow \"notepad\" null", "SendMessage 1001 513 0 0x000A0014", "SetCursorPos 0 0"}},
    {"keys go as messages with lParam 0x10001", "SelectWindow(notepad); KeyDown(65); KeyUp(65);",
     {"FindWindow \"notepad\" null", "SendMessage 1001 256 65 0x00010001", "SendMessage 1001 257 65 0x00010001"}},
    {"plain buttons and key strings ignore the target", "SelectWindow(notepad); LeftDown(); SendKeys(a);",
     {"FindWindow \"notepad\" null", "mouse_event 2", "SendKeys \"a\""}},
    {"a failed choice clears the target", "SelectWindow(notepad); SelectWindow(\"a\", \"b\"); KeyDown(65);",
     {"FindWindow \"notepad\" null", "FindWindow \"a\" \"b\"", "keybd_event 65 0"}},
    {"class and title match without regard to case", "FindWindow(\"NotePad\", \"UNTITLED - notepad\"); KeyDown(1);",
     {"FindWindow \"NotePad\" \"UNTITLED - notepad\"", "SendMessage 1001 256 1 0x00010001"}},
    {"case beyond ASCII too, and nothing more", "FindWindow(, \"\u00c9T\u00c9 \u0100\u0139\"); KeyDown(1);"
     " FindWindow(, \"untitled\"); KeyDown(2);",
     {"FindWindow null \"\u00c9T\u00c9 \u0100\u0139\"", "SendMessage 1004 256 1 0x00010001",
      "FindWindow null \"untitled\"", "keybd_event 2 0"}},
    {"a quoted empty title is no null", "FindWindow(notepad, \"\"); KeyDown(1);",
     {"FindWindow \"notepad\" \"\"", "keybd_event 1 0"}},
    {"a sub-window by class, second parameter ignored", "SelectWindow(notepad); SelectSubWindow(edit, b); KeyDown(1);",
     {"FindWindow \"notepad\" null", "FindWindowEx 1001 \"edit\"", "SendMessage 1002 256 1 0x00010001"}},
    {"no target: sub-windows among the top level", "FindWindowEx(other); KeyDown(1);",
     {"FindWindowEx 0 \"other\"", "SendMessage 1003 256 1 0x00010001"}},
    {"a failed chain starts again at the top level", "SelectWindow(notepad); SelectSubWindow(none); SelectSubWindow(other);",
     {"FindWindow \"notepad\" null", "FindWindowEx 1001 \"none\"", "FindWindowEx 0 \"other\""}},
    {"DeselectWindow returns to the input stream", "SelectWindow(notepad); DeselectWindow(); KeyDown(1);",
     {"FindWindow \"notepad\" null", "keybd_event 1 0"}}}); }

// Input may wait for the next command of another kind, which might be slow
// (a file, a program's start, a wait), and is sent on before it.
TEST_F(HostTest, HeldInputLeavesBeforeAnyOtherCommand) {
    const std::pair<const char*, int> cases[] = {
        {"LeftClick(); RightDown(); RightUp(); MiddleClick(); LeftDownEx(1, 2); MoveMouse(3, 4); KeyDown(65);"
         "KeyUp(65); SendKeys(ab); int(n, 1); add(n, 1); LeftClick();", 0},
        {"LeftClick(); Pause(1);", 1},
        {"LeftClick(); Start(notes.txt); LeftClick(); SaveImage(1, x.bmp);", 2},
        {"SendKeys(a); SelectWindow(notepad, null); MsgBox(hi);", 2},
    };
    for (const auto& [script, flushes] : cases) {
        fake.input.flushes = 0;
        run(std::string("function(main);") + script + "endfunction();");
        EXPECT_EQ(fake.input.flushes, flushes) << script;
    }
}

// The target, even once its window closed, the pause factor and the modes.
TEST_F(HostTest, TheTargetTheFactorAndTheModesOutliveTheRun) {
    run("SelectWindow(notepad); SetPausePercent(10); DisableRepeat(); RandomFindMode();");
    EXPECT_FALSE(session.repeat);
    EXPECT_FALSE(session.firstFind);
    fake.windows.removeWindow(notepad);
    EXPECT_EQ(play("KeyDown(1); Pause(100); EnableRepeat(); FirstFindMode();"),
              (Lines{"SendMessage 1001 256 1 0x00010001", "Wait 10"}));
    EXPECT_TRUE(session.repeat);
    EXPECT_TRUE(session.firstFind);
}

TEST_F(HostTest, ProgramsAndMessages) { checkAll({
    {"quoted or not", "Start(notepad.exe); Start(\"My Notes.txt\");",
     {"ShellExecute \"Open\" \"notepad.exe\" \"\" 1", "ShellExecute \"Open\" \"My Notes.txt\" \"\" 1"}},
    {"no file opens nothing", "Start(); StartEx(, , normal);", {}},
    {"window states", "StartEx(a, , normal); StartEx(a, , Minimized); StartEx(a, \"-x y\", maximized);",
     {"ShellExecute \"Open\" \"a\" \"\" 1", "ShellExecute \"Open\" \"a\" \"\" 2", "ShellExecute \"Open\" \"a\" \"-x y\" 3"}},
    {"other states start nothing", "StartEx(a, , hidden); StartEx(a, , \"Minimized\"); StartEx(a);", {}},
    {"msgbox: flags 0, empty title", "MsgBox(0x41); MsgBox(); MsgBox(\"a\", \"b\");",
     {"MessageBox 0 \"\" \"0x41\"", "MessageBox 0 \"\" \"\"", "MessageBox 0 \"\" \"a\""}},
    {"unknown commands and OrigionalPlayTime do nothing", "Foo(1,2); OrigionalPlayTime(12.5); Timer(); KeyDown(1);",
     {"keybd_event 1 0"}}}); }

TEST_F(HostTest, Pauses) { checkAll({
    {"nothing positive, nothing waited", "Pause(0); Pause(-5); Pause(abc); Pause(); Pause(0.4); PauseS(-1); PauseM(abc);",
     {}},
    {"a minute is sixty waits of a second", "PauseM(1);", Lines(60, "Wait 1000")},
    {"pieces of 9999, the last of 0 after a multiple above one", "Pause(9999); Pause(19998);",
     {"Wait 9999", "Wait 9999", "Wait 9999", "Wait 0"}},
    {"one over the piece", "Pause(10000);", {"Wait 9999", "Wait 1"}},
    {"the guard rounds the unscaled value", "Pause(0.6);", {"Wait 1"}},
    {"half speed rounds ties to even", "SetPausePercent(50); Pause(101); Pause(3); PauseS(3); PauseH(1);",
     {"Wait 50", "Wait 2", "Wait 1000", "Wait 1000"}},
    {"the scaled length decides the pieces", "SetPausePercent(300); Pause(5000);", {"Wait 9999", "Wait 5001"}},
    {"0 percent yields once and skips whole units", "SetPausePercent(0); Pause(100); PauseS(5);", {"Wait 0"}},
    {"a negative factor waits nothing", "SetPausePercent(-50); Pause(100); PauseS(2); PauseM(1); PauseH(1);",
     {"Wait 0"}},
    {"a text percent is passed over", "SetPausePercent(abc); Pause(10);", {"Wait 10"}},
    {"ignored pauses read nothing", "IgnorePauses(True); Pause(100); PauseS(1); PauseM(1); PauseH(1);", {}},
    {"only the exact word true", "IgnorePauses(\"True\"); Pause(7);", {"Wait 7"}}}); }

TEST_F(HostTest, AStopEndsThePauseAndThePiecesToCome) {
    fake.onYield = [&] {
        if (fake.transcript.size() == 1) engine.stopExecution();
    };
    EXPECT_EQ(play("Pause(40000); KeyDown(1);"), (Lines{"Wait 9999"}));
    EXPECT_EQ(play("PauseH(1); KeyDown(1);"), (Lines{"Wait 1000"}));
}

// A test whose coordinates do not convert answers true; one without its
// image answers false. (Measures: the saturation tests.)
TEST_F(BuiltinsTest, AnswersTakeTheVariablesKind) { checkAll({
    {"IsPixel(r, imagesave0, x, 2, colorrange0);", "r", Text, "True"},
    {"IsPixel(r, imagesave0, 1, 2, colorrange0);", "r", Text, "False"},
    {"Int(r, 7); IsPixel(r, imagesave0, x, 2, colorrange0);", "r", Long, "0"},
    {"Int(r, 7); IsPixel(r, imagesave0, 1, 2, colorrange0);", "r", Long, "1"},
    {"Double(r, 3); IsPixel(r, imagesave0, x, 2, colorrange0);", "r", Double, "0"},
    {"Double(r, 3); IsPixel(r, imagesave0, 1, 2, colorrange0);", "r", Double, "1"}}); }


// The SendKeys notation, table-driven: each key string and the strokes it
// gives, written "v16" press, "^16" release, 'a' typed; "rejected" when the
// whole string is refused.

std::string describe(const std::optional<std::vector<platform::KeyStroke>>& strokes) {
    if (!strokes) return "rejected";
    std::string out;
    for (const auto& s : *strokes) {
        if (!out.empty()) out += ' ';
        if (s.kind == platform::KeyStroke::Kind::Type) out += "'" + s.text + "'";
        else out += (s.kind == platform::KeyStroke::Kind::Press ? "v" : "^") + std::to_string(s.vk);
    }
    return out;
}

TEST(SendKeys, ParsesTheNotation) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""}, {"ab", "'a' 'b'"}, {"[x]", "'[' 'x' ']'"}, {"é€", "'é' '€'"}, {"+a", "v16 'a' ^16"},
        {"^(ab)c", "v17 'a' 'b' ^17 'c'"}, {"%{F4}", "v18 v115 ^115 ^18"}, {"+^a", "v16 v17 'a' ^17 ^16"},
        {"(ab)", "'a' 'b'"}, {"+()", "v16 ^16"}, {"~", "v13 ^13"}, {"^~", "v17 v13 ^13 ^17"},
        {"{ENTER}{enter}", "v13 ^13 v13 ^13"}, {"{BS}{BKSP}{BACKSPACE}", "v8 ^8 v8 ^8 v8 ^8"},
        {"{F1}{F16}", "v112 ^112 v127 ^127"}, {"{LEFT 3}", "v37 ^37 v37 ^37 v37 ^37"}, {"{LEFT 0}", ""},
        {"{a 3}", "'a' 'a' 'a'"}, {"{é 2}", "'é' 'é'"}, {"{+}{^}{%}{~}", "'+' '^' '%' '~'"},
        {"{{}{}}{(}{)}", "'{' '}' '(' ')'"}, {"{ }", "' '"}, {"+{} 2}", "v16 '}' '}' ^16"},
    };
    for (const auto& [keys, strokes] : cases) EXPECT_EQ(describe(host::parseSendKeys(keys)), strokes) << "keys: " << keys;
    for (const char* keys : {"{FOO}", "{F17}", "{F0}", "{F01}", "{LEFT x}", "{LEFT 3 4}", "{LEFT", "{}", "a}", "(a",
                             "a)", "+", "a+", "+)", "ab{FOO}"})
        EXPECT_EQ(describe(host::parseSendKeys(keys)), "rejected") << "keys: " << keys;
}

// Nesting is as deep as the text: nothing runs out of stack. A long text
// is made a piece at a time: no piece holds much of it.
TEST(SendKeys, DeepAndLongTexts) {
    const std::string opens(1'000'000, '('), closes(1'000'000, ')');
    EXPECT_FALSE(host::parseSendKeys(opens));
    EXPECT_EQ(describe(host::parseSendKeys(opens + "a" + closes)), "'a'");
    const auto held = host::parseSendKeys(std::string(1'000'000, '+') + "a");
    ASSERT_TRUE(held);
    EXPECT_EQ(held->size(), 2'000'001u);

    const std::string keys = "+(" + std::string(100'000, 'a') + "){LEFT 9999}";
    host::KeyStringStrokes strokes(keys);
    std::vector<platform::KeyStroke> piece;
    size_t total = 0, largest = 0;
    for (; strokes.next(piece); total += piece.size()) largest = std::max(largest, piece.size());
    EXPECT_EQ(total, 100'002u + 2 * 9999);
    EXPECT_LT(largest, 25'000u);
}
}  // namespace
}  // namespace tarvoke::test
