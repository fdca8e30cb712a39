#include <gtest/gtest.h>

#include "engine/scripttext.h"

namespace tarvoke::engine {
namespace {

TEST(stripSource, CommentsQuotesBlanksAndCase) {
    struct Case {
        const char* text;
        const char* stripped;
    } cases[] = {
        {"Int(I, 0);", "int(i,0);"},
        {"Message(\"Hello World\");", "message(\"Hello World\");"},
        {"#a##b#", "#b"},
        {"a# comment #b", "ab"},
        {"message(\"a#b\");#x#y", "message(\"ax"},  // the quote stays open through the comment
        {"\tA\tB", "ab"},
        {"\"\tA B\"", "\"A B\""},
        {"# open to the end", ""},
        {"Caf\xc3\x89", "caf\xc3\x89"},  // only ASCII letters are lowered
    };
    for (const Case& c : cases) EXPECT_EQ(stripSource(c.text), c.stripped) << c.text;
}

TEST(stripSource, LineEndsGoInAnotherPass) {
    EXPECT_EQ(removeLineBreaks(stripSource("A;\r\nB\n\"x\r\ny\"")), "a;b\"xy\"");
}

TEST(StatementParts, NameParametersAndCounts) {
    EXPECT_EQ(getCommandName("foo(1,2)"), "foo");
    EXPECT_EQ(getCommandName("foo"), "foo");
    EXPECT_EQ(getParameterText("foo(1,2)"), "1,2");
    EXPECT_EQ(getParameterText("foo(1)x"), "1)");
    EXPECT_EQ(getParameterText("foo()"), "");
    EXPECT_EQ(getParameterText(")x("), "");
    EXPECT_EQ(countParameters(""), 0);
    EXPECT_EQ(countParameters(","), 2);
    EXPECT_EQ(countParameters("\"a,b\",c"), 3);
    const auto pieces = splitParameters(",x,");
    ASSERT_EQ(pieces.size(), 3u);
    EXPECT_EQ(pieces[0], "");
    EXPECT_EQ(pieces[1], "x");
    EXPECT_EQ(pieces[2], "");
}

TEST(isHexText, IsCaseSensitive) {
    EXPECT_TRUE(isHexText("0x41"));
    EXPECT_FALSE(isHexText("0X41"));
    EXPECT_FALSE(isHexText("0"));
}

}  // namespace
}  // namespace tarvoke::engine
