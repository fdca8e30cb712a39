#include <gtest/gtest.h>

#include "engine/scripttext.h"
#include "playback/compiledscript.h"

using namespace tarvoke;
using namespace tarvoke::playback;

TEST(CompiledScript, CompactBodyAndItsLoad) {
    struct Case {
        std::string text, body, loaded;
    };
    const Case cases[] = {
        {"Function(Main);\r\n  MsgBox(\"Hi There; You\");\nEndFunction();", "function(main);msgbox(Hi There; You);endfunction();",
         "function(main);msgbox(Hi There; You);endfunction();"},
        {"A\tB #Note Here# C", "a\tb#notehere#c", "abc"},
        {"", "", ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(compactScript(c.text), c.body) << c.text;
        // The runtime's load folds nothing a second time.
        EXPECT_EQ(engine::stripSource(c.body, engine::SourceForm::Compact), c.loaded) << c.text;
    }
    EXPECT_EQ(bodyAsLines("a(1);msgbox(x;y);"), "a(1);\nmsgbox(x;\ny);\n");
}

TEST(CompiledScript, BytesFieldByField) {
    const std::string runtime = "RUNTIMEZ";  // L = 8; its last byte gives way to the flag
    for (const bool repeat : {false, true}) {
        const std::string program = compiledProgram(runtime, repeat, "a();");
        EXPECT_EQ(program.size(), 8u + 4u + 4u);
        EXPECT_EQ(program.substr(0, 7), "RUNTIME");
        EXPECT_EQ(program[7], repeat ? '1' : '0');
        EXPECT_EQ(program.substr(8, 4), "a();");
        EXPECT_EQ(program.substr(12), std::string("\x08\x00\x00\x00", 4));
        const auto tail = compiledTailOf(program);
        ASSERT_TRUE(tail);
        EXPECT_EQ(tail->flag, repeat ? '1' : '0');
        EXPECT_EQ(tail->body, "a();");
    }
    EXPECT_EQ(compiledProgram(std::string(300, 'x'), false, "").substr(300), std::string("\x2c\x01\x00\x00", 4));
}

TEST(CompiledScript, TailOutOfRangeIsNoScript) {
    const std::string corrupt[] = {"", "abc", std::string("\0\0\0\0", 4), std::string("xy\x03\x00\x00\x00", 6),
                                   std::string("xy\xff\xff\xff\xff", 6), "plain script text;"};
    for (const std::string& file : corrupt) EXPECT_FALSE(compiledTailOf(file)) << file.size();
    EXPECT_TRUE(compiledTailOf(std::string("xy\x02\x00\x00\x00", 6)));  // an empty body
}
