#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "engine/numeric.h"
#include "engine/scripttext.h"

namespace tarvoke::engine {
namespace {

TEST(NumericText, RecognisesWholeNumbersOnly) {
    const std::pair<const char*, bool> cases[] = {
        {"5", true},     {"-5", true},    {"+5", true},     {"2.5", true},   {".5", true},  {"5.", true},
        {"1e5", true},   {"1.5e-3", true}, {"&hff", true},  {"&HFF", true},  {" 7 ", true}, {"", false},
        {"abc", false},  {"12abc", false}, {"1.2.3", false}, {"-", false},    {".", false},  {"1e", false},
        {"&h", false},   {"1 2", false},  {"0x41", false},
    };
    for (const auto& [text, numeric] : cases) EXPECT_EQ(isNumericText(text), numeric) << text;
}

TEST(NumericText, PrefixReadingTakesTheLongestNumberAndSkipsBlanks) {
    const std::pair<const char*, double> cases[] = {
        {"12abc", 12}, {"abc", 0},     {"", 0},        {" 1 2 3", 123}, {"1.5e3x", 1500},
        {"1e", 1},     {"-2.5", -2.5}, {"&hFFFF", 65535}, {"&hffffffff", 4294967295.0}, {"1.2.3", 1.2},
        {"&hzz", 0},   {"--1", 0},
    };
    for (const auto& [text, value] : cases) EXPECT_DOUBLE_EQ(readNumericPrefix(text), value) << text;
}

TEST(Rounding, TiesGoToTheEvenNeighbour) {
    const std::pair<double, int32_t> cases[] = {{2.5, 2}, {3.5, 4}, {-2.5, -2}, {0.5, 0}, {1.5, 2}, {2.4999, 2}, {-0.6, -1}};
    for (const auto& [value, rounded] : cases) EXPECT_EQ(roundToInt32(value), rounded) << value;
    EXPECT_EQ(roundToInt32(2147483647.4), 2147483647);
    EXPECT_FALSE(roundToInt32(2147483647.5));
    EXPECT_FALSE(roundToInt32(std::nan("")));
    EXPECT_FALSE(roundToInt16(32767.5));
    EXPECT_EQ(roundToInt16(-32768.4), -32768);
}

// Rounding and the byte's and 16-bit bounds through the commands: the key
// and Ex rows of host_test.cpp; textToLong: the builtins' cases in engine_test.cpp.
TEST(Conversions, FailOnEmptyNonNumericAndOutOfRange) {
    EXPECT_EQ(textToByte("255"), 255);
    EXPECT_EQ(textToInt16("-32768"), -32768);
    EXPECT_FALSE(textToInt16("lx"));
    EXPECT_EQ(textToInt32(" 1e3 "), 1000);
    EXPECT_FALSE(textToInt32("12abc"));
    EXPECT_EQ(textToDouble("2.5"), 2.5);
    EXPECT_FALSE(textToDouble("1e400"));
}

TEST(DoubleToText, FifteenDigitsPlainOrExponent) {
    const std::pair<double, const char*> cases[] = {
        // More forms, nan and -inf: the builtins' NumberText cases in engine_test.cpp.
        {0, "0"}, {5.5, "5.5"}, {-2.25, "-2.25"}, {1.0 / 3, "0.333333333333333"}, {1e-7, "1E-07"},
        {999999999999999, "999999999999999"}, {123456789012345678.0, "1.23456789012346E+17"},
        {2.0 / 3 * 1e-6, "6.66666666666667E-07"}, {std::numeric_limits<double>::infinity(), "inf"},
    };
    for (const auto& [value, text] : cases) EXPECT_EQ(doubleToText(value), text) << value;
}

TEST(DoubleToLong, GoesThroughTheText) {
    EXPECT_EQ(doubleToLong(2.5), 2);
    EXPECT_EQ(doubleToLong(0.5000000000000001), 0);  // prints as 0.5, a tie
    EXPECT_FALSE(doubleToLong(1e20));
    EXPECT_FALSE(doubleToLong(std::numeric_limits<double>::infinity()));
}


TEST(stripSource, CommentsQuotesBlanksAndCase) {
    const std::pair<const char*, const char*> cases[] = {
        // Lowering, tabs and blanks, UTF-8, line ends and comments: tests/scripts/engine/layout_crlf.tk.
        {"message(\"a#b\");#x#y", "message(\"ax"},  // the quote stays open through the comment
        {"# open to the end", ""},
    };
    for (const auto& [text, stripped] : cases) EXPECT_EQ(stripSource(text), stripped) << text;
}
}  // namespace
}  // namespace tarvoke::engine
