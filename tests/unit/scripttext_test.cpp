#include <gtest/gtest.h>

#include "engine/scripttext.h"

namespace tarvoke::engine {
namespace {

TEST(stripSource, CommentsQuotesBlanksAndCase) {
    const std::pair<const char*, const char*> cases[] = {
        // Lowering, tabs, UTF-8 and line ends: tests/scripts/engine/layout_crlf.tk.
        {"#a##b#", "#b"},
        {"a# comment #b", "ab"},
        {"message(\"a#b\");#x#y", "message(\"ax"},  // the quote stays open through the comment
        {"\"\tA B\"", "\"A B\""},
        {"# open to the end", ""},
    };
    for (const auto& [text, stripped] : cases) EXPECT_EQ(stripSource(text), stripped) << text;
}

}  // namespace
}  // namespace tarvoke::engine
