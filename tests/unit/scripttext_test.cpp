#include <gtest/gtest.h>

#include "engine/scripttext.h"

namespace tarvoke::engine {
namespace {

TEST(StripSource, CommentsQuotesBlanksAndCase) {
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
    for (const Case& c : cases) EXPECT_EQ(StripSource(c.text), c.stripped) << c.text;
}

TEST(StripSource, LineEndsGoInAnotherPass) {
    EXPECT_EQ(RemoveLineBreaks(StripSource("A;\r\nB\n\"x\r\ny\"")), "a;b\"xy\"");
}

TEST(StatementParts, NameParametersAndCounts) {
    EXPECT_EQ(GetCommandName("foo(1,2)"), "foo");
    EXPECT_EQ(GetCommandName("foo"), "foo");
    EXPECT_EQ(GetParameterText("foo(1,2)"), "1,2");
    EXPECT_EQ(GetParameterText("foo(1)x"), "1)");
    EXPECT_EQ(GetParameterText("foo()"), "");
    EXPECT_EQ(GetParameterText(")x("), "");
    EXPECT_EQ(CountParameters(""), 0);
    EXPECT_EQ(CountParameters(","), 2);
    EXPECT_EQ(CountParameters("\"a,b\",c"), 3);
    const auto pieces = SplitParameters(",x,");
    ASSERT_EQ(pieces.size(), 3u);
    EXPECT_EQ(pieces[0], "");
    EXPECT_EQ(pieces[1], "x");
    EXPECT_EQ(pieces[2], "");
}

TEST(IsHexText, IsCaseSensitive) {
    EXPECT_TRUE(IsHexText("0x41"));
    EXPECT_FALSE(IsHexText("0X41"));
    EXPECT_FALSE(IsHexText("0"));
}

}  // namespace
}  // namespace tarvoke::engine
