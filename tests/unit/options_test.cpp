#include <gtest/gtest.h>

#include "options.h"

namespace tarvoke::player {
namespace {

ParseResult parse(std::vector<std::string> args) { return parseOptions(args); }

TEST(PlayerOptions, AcceptsEveryOption) {
    const auto result = parse({"--dry-run", "--dump", "--load-only", "--ignore-pauses", "--percent", "50",
                               "--repeat=3", "x.tk"});
    ASSERT_TRUE(std::holds_alternative<Options>(result));
    const auto& options = std::get<Options>(result);
    EXPECT_TRUE(options.dryRun && options.dump && options.loadOnly && options.ignorePauses);
    EXPECT_EQ(options.percent, 50.0);
    EXPECT_EQ(options.repeat, 3);
    EXPECT_EQ(options.file, "x.tk");
    EXPECT_EQ(std::get<Options>(parse({"-"})).file, "-");
    EXPECT_EQ(std::get<Options>(parse({"--screen", "800x600", "x.tk"})).screen, (std::pair<int32_t, int32_t>{800, 600}));
    EXPECT_TRUE(std::get<Options>(parse({"--dry-run", "--write-pictures", "x.tk"})).writePictures);
    EXPECT_EQ(std::get<Options>(parse({"x.tk"})).maxTextMemory, uint64_t{1} << 30);
    EXPECT_EQ(std::get<Options>(parse({"--max-text-memory", "512M", "x.tk"})).maxTextMemory, uint64_t{512} << 20);
    EXPECT_EQ(std::get<Options>(parse({"--max-text-memory=4096", "x.tk"})).maxTextMemory, 4096u);
}

TEST(PlayerOptions, RejectsBadUsage) {
    const std::vector<std::vector<std::string>> bad = {
        {},
        {"--repeat", "0", "x.tk"},
        {"--repeat", "1.5", "x.tk"},
        {"--repeat", "x.tk"},
        {"--percent", "abc", "x.tk"},
        {"--percent", "-5", "x.tk"},
        {"--bogus", "x.tk"},
        {"a.tk", "b.tk"},
        {"--screen", "800", "x.tk"},
        {"--screen", "0x600", "x.tk"},
        {"--screen", "800x", "x.tk"},
        {"--screen", "-8x6", "x.tk"},
        {"--screen", "40000x600", "x.tk"},
        {"--write-pictures", "x.tk"},
        {"--max-text-memory", "0", "x.tk"},
        {"--max-text-memory", "1T", "x.tk"},
        {"--max-text-memory", "-5M", "x.tk"},
    };
    for (const auto& args : bad) EXPECT_TRUE(std::holds_alternative<UsageError>(parse(args))) << args.size();
    EXPECT_TRUE(std::holds_alternative<ShowHelp>(parse({"x.tk", "--help"})));
}

}  // namespace
}  // namespace tarvoke::player

namespace tarvoke::player {
namespace {

TEST(PlayerOptions, RecordTakesAFileAndItsOwnSwitches) {
    const auto result = parse({"--record", "out.tk", "--force", "--no-mouse-move", "--no-extended-clicks"});
    ASSERT_TRUE(std::holds_alternative<Options>(result));
    const auto& options = std::get<Options>(result);
    EXPECT_EQ(options.record, "out.tk");
    EXPECT_TRUE(options.force);
    EXPECT_FALSE(options.mouseMove);
    EXPECT_FALSE(options.extendedClicks);
    const std::vector<std::vector<std::string>> bad = {
        {"--record"}, {"--record", "out.tk", "play.tk"}, {"--record", "out.tk", "--dry-run"}, {"--force", "x.tk"},
        {"--no-mouse-move", "x.tk"},
    };
    for (const auto& args : bad) EXPECT_TRUE(std::holds_alternative<UsageError>(parse(args))) << args.size();
}

}  // namespace
}  // namespace tarvoke::player

namespace tarvoke::player {
namespace {

TEST(PlayerOptions, HeadlessTakesASizeAWindowManagerAndAScreenshot) {
    const auto result = parse({"--headless=1280x1024", "--wm", "openbox", "--screenshot=end.png", "x.tk"});
    ASSERT_TRUE(std::holds_alternative<Options>(result));
    const auto& options = std::get<Options>(result);
    EXPECT_EQ(options.headless, (std::pair<int32_t, int32_t>{1280, 1024}));
    EXPECT_EQ(options.windowManager, "openbox");
    EXPECT_EQ(options.screenshot, "end.png");
    EXPECT_EQ(std::get<Options>(parse({"--headless", "x.tk"})).headless, (std::pair<int32_t, int32_t>{1920, 1080}));
    EXPECT_TRUE(std::holds_alternative<ShowVersion>(parse({"x.tk", "--version"})));
    const std::vector<std::vector<std::string>> bad = {
        {"--headless=big", "x.tk"}, {"--headless", "--dry-run", "x.tk"}, {"--headless", "--record", "out.tk"},
        {"--wm", "openbox", "x.tk"}, {"--screenshot", "a.png", "x.tk"}, {"--headless", "--wm"},
    };
    for (const auto& args : bad) EXPECT_TRUE(std::holds_alternative<UsageError>(parse(args))) << args[0] << args[1];
}

}  // namespace
}  // namespace tarvoke::player
