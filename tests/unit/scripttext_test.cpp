#include <gtest/gtest.h>

#include "engine/scripttext.h"

namespace tarvoke::engine {
namespace {

TEST(stripSource, CommentsQuotesBlanksAndCase) {
    struct Case {
        const char* text;
        const char* stripped;
    } cases[] = {
        // Lowering, tabs, UTF-8 and line ends: tests/scripts/engine/layout_crlf.tk.
        {"#a##b#", "#b"},
        {"a# comment #b", "ab"},
        {"message(\"a#b\");#x#y", "message(\"ax"},  // the quote stays open through the comment
        {"\"\tA B\"", "\"A B\""},
        {"# open to the end", ""},
    };
    for (const Case& c : cases) EXPECT_EQ(stripSource(c.text), c.stripped) << c.text;
}

}  // namespace
}  // namespace tarvoke::engine
