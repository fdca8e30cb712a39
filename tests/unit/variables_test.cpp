#include "engine_fixture.h"

namespace tarvoke::test {
namespace {

class VariablesTest : public EngineTest {};

TEST_F(VariablesTest, Conditions) {
    struct Case {
        const char* setup;
        const char* condition;
        bool result;
    } cases[] = {
        {"int(x,5);", "x=5", true},
        {"string(x,5);", "x=5", true},  // compared as text
        {"double(x,5.5);", "x=5", false},
        {"int(x,5);", "x", false},       // no operator
        {"", "a=b=c", false},            // right side "b=c"
        {"string(a,\"b=c\");", "a=b=c", true},
        {"", "1<=1", true},
        {"", "1=<1", false},             // "=" with the right side "<1"
        {"string(s,\"abc\");", "s=\"Abc\"", false},
        {"string(s,\"abc\");", "s=abc", true},  // as a script writes s=Abc: the load lowers it
        {"", "2<10", true},
        {"", "\"2\"<\"10\"", false},      // as text
        {"int(n,2);", "n<\"10\"", false}, // text against number: as text
        {"double(d,2.5);", "d>2", true},  // long against double
        {"", "3<>4", true},
        {"", "3!=3", false},
        {"", "b>=a", true},
        {"", "99999999999=1", false},     // beyond 32 bits: false
        {"", "\"=\"", false},             // a lone quote on each side
        {"", "=", true},                  // two empty texts
    };
    for (const Case& c : cases) {
        load(c.setup);
        engine.execute();
        EXPECT_EQ(engine.evaluate(c.condition), c.result)
            << c.setup << " " << c.condition;
    }
}

TEST_F(VariablesTest, ResolvingParameters) {
    using enum engine::ValueKind;
    run("string(s, abc); int(l, 7); double(d, 2.5);");
    struct Case {
        const char* parameter;
        engine::ValueKind type;
        const char* asText;
    } cases[] = {
        {"s", Text, "abc"}, {"l", Long, "7"}, {"d", Double, "2.5"}, {"5", Long, "5"}, {"2.5", Double, "2.5"},
        {"word", Text, "word"}, {"\"s\"", Text, "s"}, {"$s", Text, "s"}, {"", Text, ""}, {"0x41", Text, "0x41"},
        {"1e3", Long, "1e3"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(typeOf(c.parameter), c.type) << c.parameter;
        EXPECT_EQ(engine.getVariableAsString(c.parameter), c.asText) << c.parameter;
    }
    // GetVariable decodes 0x texts and unquotes in place; GetVariableAsString does neither.
    std::string hex = "0x4142";
    engine.getVariable(hex);
    EXPECT_EQ(engine.valueSlot().text, "AB");
    std::string quoted = "\"s\"";
    engine.getVariable(quoted);
    EXPECT_EQ(quoted, "s");
    EXPECT_EQ(engine.getVariableAsString("$x"), "x");
}

TEST_F(VariablesTest, LastPositionWordsReadBeforeTheTables) {
    session.lastX = 12;
    session.lastY = -3;
    run("set(lx, 5);");
    EXPECT_TRUE(engine.isExistingVariable("lx"));
    EXPECT_EQ(valueOf("lx"), "12");
    EXPECT_EQ(valueOf("ly"), "-3");
    EXPECT_EQ(typeOf("lx"), engine::ValueKind::Long);
}

TEST_F(VariablesTest, ATooLargeNumberKeepsTheLastLong) {
    std::string five = "5";
    engine.getVariable(five);
    std::string huge = "99999999999";
    engine.getVariable(huge);
    EXPECT_EQ(engine.valueSlot().kind, engine::ValueKind::Long);
    EXPECT_EQ(engine.valueSlot().integer, 5);
}

}  // namespace
}  // namespace tarvoke::test
