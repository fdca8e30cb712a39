#include "engine_fixture.h"

namespace tarvoke::test {
namespace {

class BuiltinsTest : public EngineTest {};

using enum engine::ValueKind;

// Each case runs a script and reads one variable back, with its type.
struct Case {
    const char* script;
    const char* variable;
    engine::ValueKind type;
    const char* value;
};

void PrintTo(const Case& c, std::ostream* os) { *os << c.script; }

class BuiltinCases : public BuiltinsTest, public ::testing::WithParamInterface<Case> {};

TEST_P(BuiltinCases, LeaveTheVariable) {
    const Case& c = GetParam();
    run(c.script);
    EXPECT_EQ(typeOf(c.variable), c.type);
    EXPECT_EQ(valueOf(c.variable), c.value);
}

INSTANTIATE_TEST_SUITE_P(Declarations, BuiltinCases, ::testing::Values(
    // More in tests/scripts/engine: number_text.tk (rounding), layout_crlf.tk (0x texts), variables_dump.tk.
    Case{"string(x, 5);", "x", Text, "5"}, Case{"double(x, abc);", "x", Double, "0"}, Case{"int(x);", "x", Long, "0"},
    Case{"string(x, \"0X41\");", "x", Text, "0X41"},  // hex only after a lower-case 0x
    Case{"int(x, 9); int(x, 3);", "x", Long, "3"}, Case{"set(x, 5);", "x", Long, "5"},
    Case{"set(x, 2.5);", "x", Double, "2.5"}, Case{"set(x, abc);", "x", Text, "abc"}, Case{"set(x, \"5\");", "x", Long, "5"},
    Case{"int(x, 1); set(x, 2.5);", "x", Long, "1"},     // the double stands behind the long
    Case{"string(x, a); set(x, 5);", "x", Text, "a"}, Case{"double(b, 5.5); set(a, b);", "a", Double, "5.5"},
    Case{"double(b, 5); set(a, b);", "a", Long, "5"}, Case{"int(x, 99999999999);", "x", Long, "0"}));

INSTANTIATE_TEST_SUITE_P(Arithmetic, BuiltinCases, ::testing::Values(
    Case{"add(u, 1); add(u, 1);", "u", Text, "11"}, Case{"int(x, 10); add(x, 2.5);", "x", Long, "12"},
    Case{"int(x, 7); divide(x, 2);", "x", Long, "4"}, Case{"int(x, 5); divide(x, 2);", "x", Long, "2"},
    Case{"int(x, 5); divide(x, 0);", "x", Long, "5"}, Case{"int(x, 2147483647); add(x, 1);", "x", Long, "2147483647"},
    Case{"int(x, 65536); multiply(x, 65536);", "x", Long, "65536"},
    Case{"int(x, 10); subtract(x, 12abc);", "x", Long, "-2"},
    Case{"double(d, 1.0e300); multiply(d, 1.0e300);", "d", Double, "inf"},
    Case{"double(d, 1.5); multiply(d, 2);", "d", Double, "3"}, Case{"int(x, 3); power(x, 2);", "x", Long, "9"},
    Case{"int(x, 9); power(x, 0.5);", "x", Long, "1"}, Case{"double(d, 9); power(d, 0.5);", "d", Double, "3"},
    Case{"int(x, 0); power(x, -1);", "x", Long, "0"}, Case{"double(d, 0); power(d, -1);", "d", Double, "0"},
    Case{"double(d, -8); power(d, 0.5);", "d", Double, "-8"}, Case{"int(x, 3); power(x, abc);", "x", Long, "3"},
    Case{"string(s, ab); power(s, 2);", "s", Text, "ab"}, Case{"string(s, ab); multiply(s, 3);", "s", Text, "ababab"},
    Case{"string(s, ab); multiply(s, 0);", "s", Text, ""}, Case{"string(s, ab); multiply(s, 40000);", "s", Text, "ab"},
    Case{"string(s, ab); multiply(s, cd);", "s", Text, "abcd"},
    Case{"string(s, 1a1b); subtract(s, 1);", "s", Text, "ab"},
    Case{"string(s, banana); divide(s, \"a\");", "s", Text, "bnn"},
    Case{"string(s, ab); subtract(s, \"\");", "s", Text, "ab"},
    Case{"string(s, x); combine(s, 2.5);", "s", Text, "x2.5"},
    Case{"string(s, \"aXa\"); removeall(s, a);", "s", Text, "X"}));

INSTANTIATE_TEST_SUITE_P(Functions, BuiltinCases, ::testing::Values(
    Case{"int(x, 5); factorial(x);", "x", Long, "120"}, Case{"int(x, 0); factorial(x);", "x", Long, "1"},
    Case{"int(x, -3); factorial(x);", "x", Long, "1"}, Case{"double(d, 3.5); factorial(d);", "d", Double, "24"},
    Case{"int(x, 13); factorial(x);", "x", Long, "13"}, Case{"double(d, 171); factorial(d);", "d", Double, "171"},
    Case{"double(d, 40000); factorial(d);", "d", Double, "40000"}, Case{"string(s, 5); factorial(s);", "s", Text, "5"},
    Case{"int(x, 2); sin(x);", "x", Long, "1"}, Case{"double(d, 0); cos(d);", "d", Double, "1"},
    Case{"double(d, 1); log(d);", "d", Double, "0"}, Case{"int(x, 0); log(x);", "x", Long, "0"},
    Case{"double(d, -1); log(d);", "d", Double, "-1"}, Case{"string(s, 1); tan(s);", "s", Text, "1"},
    Case{"int(x, 1); tan(x);", "x", Long, "2"}));

INSTANTIATE_TEST_SUITE_P(Text, BuiltinCases, ::testing::Values(
    Case{"string(s, abcdef); parse(s, 2, 3);", "s", Text, "bcd"},
    Case{"string(s, abcdef); parse(s, 9, 3);", "s", Text, ""},
    Case{"string(s, abcdef); parse(s, 2, 0);", "s", Text, ""},
    Case{"string(s, abcdef); parse(s, 0, 3);", "s", Text, "abcdef"},
    Case{"string(s, abcdef); parse(s, 2);", "s", Text, "abcdef"},
    Case{"string(s, abcdef); parse(s, x, 2);", "s", Text, "abcdef"}, Case{"int(x, 5); parse(x, 1, 1);", "x", Long, "5"},
    Case{"string(s, abab); for(s, a, b);", "s", Text, "bbbb"},
    Case{"string(s, abab); replace(s, ab, x);", "s", Text, "xx"},
    Case{"string(s, abc); replace(s, \"\", x);", "s", Text, "abc"},
    Case{"string(s, aaa); replace(s, aa, a);", "s", Text, "aa"},
    Case{"parse(0x414243, 1, 2);", "0x414243", Text, "0x"}));

TEST_F(BuiltinsTest, ATextNeverOutgrowsTheLimit) {
    // Steps that would pass the limit fail and leave the text; those that
    // reach it exactly succeed. Without the limit a loop of Multiply grows a
    // text until memory runs out.
    engine.setMaxTextBytes(8);
    struct Limit {
        const char* script;
        const char* value;
    } cases[] = {
        {"string(s, abcd); multiply(s, 2);", "abcdabcd"},
        {"string(s, abcd); multiply(s, 3);", "abcd"},
        {"string(s, abcd); add(s, efgh); add(s, i);", "abcdefgh"},
        {"string(s, abcd); multiply(s, efghi);", "abcd"},
        {"string(s, aaaa); replace(s, a, bb);", "bbbbbbbb"},
        {"string(s, aaaaa); replace(s, a, bb);", "aaaaa"},
    };
    for (const Limit& c : cases) {
        run(c.script);
        EXPECT_EQ(valueOf("s"), c.value) << c.script;
    }
}

TEST_F(BuiltinsTest, TextsTogetherStayWithinTheirMemory) {
    // The texts of the variables, the value in hand and the text a step
    // builds stay within the limit: the doubling stops short of it, and a
    // step beyond fails while the others go on.
    constexpr size_t kLimit = size_t{1} << 20;
    engine.setMaxTextMemory(kLimit);
    std::string doubling = "string(x, a);";
    for (int i = 0; i < 30; ++i) doubling += "combine(x, x);";
    run(doubling + "string(y, x); multiply(y, 2); string(z, small);");
    const size_t x = valueOf("x").size();
    EXPECT_EQ(x & (x - 1), 0u) << "a doubling failed part way";
    EXPECT_GE(x, kLimit / 8);
    EXPECT_LE(engine.textMemory(), kLimit);
    EXPECT_EQ(valueOf("z"), "small");
    EXPECT_LE(valueOf("y").size(), x);
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

TEST_F(BuiltinsTest, MessageStyles) {
    run("message(hello); message(0x4142, normal, title); message(Hello World, Critical, x);"
        "message(a, reading, t); message(a, bogus, t); message(a, \"\", t);");
    EXPECT_EQ(fake.transcript, (std::vector<std::string>{"MessageBox 0 \"title\" \"0x4142\"",
                                                         "MessageBox 16 \"x\" \"helloworld\"",
                                                         "MessageBox 1048576 \"t\" \"a\""}));
}

TEST_F(BuiltinsTest, DumpListsStatementsFunctionsAndVariablesInOrder) {
    run("function(main); string(s, \"a b\"); double(d, 0.5); int(n, 3); combine(s, c); endfunction();"
        "function(f); for(s,1,2); selectwindow(\"A\", b); foo(1,2,3,4,5,6,7,8); endfunction();");
    EXPECT_EQ(engine.getDebug(),
              "Printing Code:\n"
              "Command: function; Parameters: main      \n"
              "Command: string; Parameters: s a b     \n"
              "Command: double; Parameters: d 0.5     \n"
              "Command: int; Parameters: n 3     \n"
              "Command: add; Parameters: s c     \n"
              "Command: endfunction; Parameters:       \n"
              "Command: function; Parameters: f      \n"
              "Command: replace; Parameters: s 1 2    \n"
              "Command: findwindow; Parameters: \"A\" b     \n"
              "Command: UNKNOWN COMMAND; Parameters: 1 2 3 4 5 6 7\n"
              "Command: endfunction; Parameters:       \n"
              "\nPrinting Found Functions:\n"
              "Function: main, line: 1\n"
              "Function: f, line: 7\n"
              "\nPrinting Found Variables:\n"
              "String: s, value: a bc\n"
              "Long: n, value: 3\n"
              "Double: d, value: 0.5\n"
              "\n\n\n");
}

TEST_F(BuiltinsTest, DumpBeforeAnyLoadHasItsHeadingsOnly) {
    EXPECT_EQ(engine.getDebug(), "Printing Code:\n\nPrinting Found Functions:\n\nPrinting Found Variables:\n\n\n\n");
}

}  // namespace
}  // namespace tarvoke::test
