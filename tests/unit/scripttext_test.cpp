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

// Statement parts and parameter counts are checked through the loader's table.

}  // namespace
}  // namespace tarvoke::engine
