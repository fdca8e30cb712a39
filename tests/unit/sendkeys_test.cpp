// The SendKeys notation, table-driven: each key string and the strokes it
// gives, written "v16" press, "^16" release, 'a' typed; "rejected" when the
// whole string is refused.

#include <gtest/gtest.h>

#include "host/sendkeys.h"

namespace tarvoke::test {
namespace {

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

const std::pair<const char*, const char*> kCases[] = {
    {"", ""}, {"ab", "'a' 'b'"}, {"[x]", "'[' 'x' ']'"}, {"é€", "'é' '€'"}, {"+a", "v16 'a' ^16"},
    {"^(ab)c", "v17 'a' 'b' ^17 'c'"}, {"%{F4}", "v18 v115 ^115 ^18"}, {"+^a", "v16 v17 'a' ^17 ^16"},
    {"(ab)", "'a' 'b'"}, {"+()", "v16 ^16"}, {"~", "v13 ^13"}, {"^~", "v17 v13 ^13 ^17"},
    {"{ENTER}{enter}", "v13 ^13 v13 ^13"}, {"{BS}{BKSP}{BACKSPACE}", "v8 ^8 v8 ^8 v8 ^8"},
    {"{F1}{F16}", "v112 ^112 v127 ^127"}, {"{LEFT 3}", "v37 ^37 v37 ^37 v37 ^37"}, {"{LEFT 0}", ""},
    {"{a 3}", "'a' 'a' 'a'"}, {"{é 2}", "'é' 'é'"}, {"{+}{^}{%}{~}", "'+' '^' '%' '~'"},
    {"{{}{}}{(}{)}", "'{' '}' '(' ')'"}, {"{ }", "' '"}, {"+{} 2}", "v16 '}' '}' ^16"},
};

TEST(SendKeys, ParsesTheNotation) {
    for (const auto& [keys, strokes] : kCases) EXPECT_EQ(describe(host::parseSendKeys(keys)), strokes) << "keys: " << keys;
    for (const char* keys : {"{FOO}", "{F17}", "{F0}", "{F01}", "{LEFT x}", "{LEFT 3 4}", "{LEFT", "{}", "a}", "(a",
                             "a)", "+", "a+", "+)", "ab{FOO}"})
        EXPECT_EQ(describe(host::parseSendKeys(keys)), "rejected") << "keys: " << keys;
}

// Nesting is as deep as the text: nothing runs out of stack.
TEST(SendKeys, NestsAsDeepAsTheText) {
    const std::string opens(1'000'000, '('), closes(1'000'000, ')');
    EXPECT_FALSE(host::parseSendKeys(opens));
    EXPECT_EQ(describe(host::parseSendKeys(opens + "a" + closes)), "'a'");
    const auto held = host::parseSendKeys(std::string(1'000'000, '+') + "a");
    ASSERT_TRUE(held);
    EXPECT_EQ(held->size(), 2'000'001u);
}

}  // namespace
}  // namespace tarvoke::test
