#include <gtest/gtest.h>

#include "options.h"

namespace tarvoke::player {
namespace {

Options accepted(std::vector<std::string> args) {
    const ParseResult result = parseOptions(args);
    EXPECT_TRUE(std::holds_alternative<Options>(result)) << args[0];
    return std::holds_alternative<Options>(result) ? std::get<Options>(result) : Options{};
}

// The options that the script tests (tests/scripts) and the safety test
// give the player are read there.
TEST(PlayerOptions, AcceptsTheOptions) {
    EXPECT_EQ(accepted({"--repeat=3", "x.tk"}).repeat, 3);
    EXPECT_EQ(accepted({"--explain", "why", "x.tk"}).explain, "why");
    EXPECT_EQ(accepted({"x.tk"}).maxTextMemory, uint64_t{1} << 30);
    EXPECT_EQ(accepted({"--max-text-memory=4096", "x.tk"}).maxTextMemory, 4096u);

    const Options r = accepted({"--record", "out.tk", "--force", "--no-mouse-move", "--no-extended-clicks"});
    EXPECT_EQ(r.record, "out.tk");
    EXPECT_TRUE(r.force && !r.mouseMove && !r.extendedClicks);

    const Options h = accepted({"--headless=1280x1024", "--wm", "openbox", "--screenshot=end.png", "x.tk"});
    EXPECT_EQ(h.headless, (std::pair<int32_t, int32_t>{1280, 1024}));
    EXPECT_EQ(h.windowManager, "openbox");
    EXPECT_EQ(h.screenshot, "end.png");
    EXPECT_EQ(accepted({"--headless", "x.tk"}).headless, (std::pair<int32_t, int32_t>{1920, 1080}));
    EXPECT_TRUE(std::holds_alternative<ShowHelp>(parseOptions({"x.tk", "--help"})));
    EXPECT_TRUE(std::holds_alternative<ShowVersion>(parseOptions({"x.tk", "--version"})));
}

TEST(PlayerOptions, RejectsBadUsage) {
    const std::vector<std::vector<std::string>> bad = {
        {},
        {"--repeat", "0", "x.tk"}, {"--repeat", "1.5", "x.tk"}, {"--repeat", "x.tk"},
        {"--percent", "abc", "x.tk"}, {"--percent", "-5", "x.tk"},
        {"--bogus", "x.tk"}, {"a.tk", "b.tk"},
        {"--screen", "800", "x.tk"}, {"--screen", "0x600", "x.tk"}, {"--screen", "800x", "x.tk"},
        {"--screen", "-8x6", "x.tk"}, {"--screen", "40000x600", "x.tk"},
        {"--write-pictures", "x.tk"}, {"--check"}, {"--check", "--dry-run", "x.tk"}, {"--check", "--headless", "x.tk"},
        {"x.tk", "--explain"},
        {"--max-text-memory", "0", "x.tk"}, {"--max-text-memory", "1T", "x.tk"}, {"--max-text-memory", "-5M", "x.tk"},
        // the recorder's own switches
        {"--record"}, {"--record", "out.tk", "play.tk"}, {"--record", "out.tk", "--dry-run"}, {"--force", "x.tk"},
        {"--no-mouse-move", "x.tk"},
        // a headless desktop
        {"--headless=big", "x.tk"}, {"--headless", "--dry-run", "x.tk"}, {"--headless", "--record", "out.tk"},
        {"--wm", "openbox", "x.tk"}, {"--screenshot", "a.png", "x.tk"}, {"--headless", "--wm"},
    };
    for (const auto& args : bad) {
        std::string line;
        for (const auto& arg : args) line += arg + " ";
        EXPECT_TRUE(std::holds_alternative<UsageError>(parseOptions(args))) << line;
    }
}

}  // namespace
}  // namespace tarvoke::player
