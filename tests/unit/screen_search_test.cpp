// Colour ranges, the searches for them, and the saturation tests, through
// the script commands that scripts use.

#include <random>

#include "screen/colorsearch.h"
#include "screen/saturation.h"
#include "screen_fixture.h"

namespace tarvoke::test {
namespace {

using platform::makePixel;
using platform::PixelGrid;

const uint32_t kOrange = makePixel(200, 100, 50);

class SearchTest : public ScreenTest {
protected:
    // 10 x 8 of grey 128 with orange at (6, 2) and (3, 5), and black at (7, 2).
    void SetUp() override {
        PixelGrid grid = filledGrid(10, 8, grey(128));
        grid.at(6, 2) = kOrange;
        grid.at(3, 5) = kOrange;
        grid.at(7, 2) = 0;
        putImage(0, grid);
        runBody("CreateColorRange(colorrange4, 199, 49, 99, 201, 51, 101);");
    }
    std::pair<int, int> last() const { return {session.lastX, session.lastY}; }
};

TEST_F(SearchTest, CreateColorRangeWithABadPartStoresNothing) {
    runBody("CreateColorRange(colorrange4, 1, 2, 3, 4, 5, x);\nCreateColorRange(colorrange4, 1, 2, 3, 4, 5, 40000);\n"
            "CreateColorRange(colorrange, 1, 2, 3, 4, 5, 6);\nCreateColorRange(colorrange0, 1, 2, 3, 4, 5);");
    EXPECT_EQ(session.colorRanges.colorRangeMin[4], (screen::ColorBound{199, 49, 99}));
    EXPECT_EQ(session.colorRanges.colorRangeMin[0], (screen::ColorBound{}));
}

TEST_F(SearchTest, MoveMouseGoesToTheFirstFindInReadingOrder) {
    const struct {
        const char* statement;
        std::vector<std::string> transcript;
        std::pair<int, int> last;
    } cases[] = {
        {"MoveMouseToColorRange(imagesave0, colorrange4);", {"SetCursorPos 6 2"}, {6, 2}},
        {"MoveMouseToColorRangeEx(0, colorrange4, 0, 3, 9, 7);", {"SetCursorPos 3 5"}, {3, 5}},
        {"MoveMouseToColorRangeEx(0, colorrange4, 6, 2, 6, 2);", {"SetCursorPos 6 2"}, {6, 2}},
        {"MoveMouseToColorRangeEx(0, colorrange4, 7, 0, 2, 7);", {}, {0, 0}},        // x2 < x1
        {"MoveMouseToColorRangeEx(0, colorrange4, -5, -5, 100, 100);", {"SetCursorPos 6 2"}, {6, 2}},
        {"MoveMouseToColorRangeEx(0, colorrange4, 0, 0, 9, x);", {}, {0, 0}},        // no number
        {"MoveMouseToColorRange(imagesave1, colorrange4);", {}, {0, 0}},             // empty slot
        {"MoveMouseToColorRange(nothing, colorrange4);", {}, {0, 0}},
        // A range name that cannot be read is range 0, which holds black only.
        {"MoveMouseToColorRange(0, colorrange);", {"SetCursorPos 7 2"}, {7, 2}},
        // The centre of a 10 x 8 screen is (5, 4).
        {"MoveMouseToColorRangeFromCenterScreen(0, colorrange4, -2, 1, 4, 3);", {"SetCursorPos 3 5"}, {3, 5}},
        {"MoveMouseToColorRangeFromCenterScreen(0, colorrange4, 0, 0, 4, 3);", {}, {0, 0}},
        // The find mode is for the tests only; it stays set, so this row comes last.
        {"RandomFindMode(); MoveMouseToColorRange(0, colorrange4);", {"SetCursorPos 6 2"}, {6, 2}},
    };
    for (const auto& c : cases) {
        session.lastX = session.lastY = 0;
        screen.setSize({10, 8});
        fake.transcript.clear();
        runBody(c.statement);
        EXPECT_EQ(fake.transcript, c.transcript) << c.statement;
        EXPECT_EQ(last(), c.last) << c.statement;
    }
}

// Saturation: the mean brightness, here of grey (50), orange (45.57) and black.
TEST_F(SearchTest, TestsAnswerAndNoteTheFind) {
    checkAnswers({
        {"IsPixel(r, 0, 6, 2, colorrange4);", "True", {6, 2}},
        {"IsPixel(r, 0, 5, 2, colorrange4);", "False", {-1, -1}},
        {"IsPixelIn(r, 0, 0, 0, 9, 7, colorrange4);", "True", {6, 2}},
        {"RandomFindMode(); IsPixelIn(r, 0, 0, 0, 9, 7, colorrange4);", "True", {3, 5}},
        {"RandomFindMode(); IsPixelIn(r, 0, 0, 6, 9, 7, colorrange4);", "False", {-1, -1}},
        // Outside the image nothing is in range, not even black.
        {"IsPixel(r, 0, 20, 20, colorrange7);", "False", {-1, -1}},
        {"IsPixel(r, 5, 0, 0, colorrange7);", "False", {-1, -1}},
        // A coordinate that cannot be converted skips the test: true.
        {"IsPixel(r, imagesave0, abc, 5, colorrange0);", "True", {-1, -1}},
        {"IsPixelIn(r, 0, 0, 0, 9, 70000, colorrange4);", "True", {-1, -1}},
        {"IsPixel(r, noimage, 6, 2, colorrange4);", "False", {-1, -1}},
        {"IsSaturation(r, 0, 5, 2, 50);", "True", {5, 2}},
        {"IsSaturation(r, 0, 5, 2, -50);", "True", {5, 2}},
        {"IsSaturation(r, 0, 5, 2, 49.9);", "False", {-1, -1}},
        {"IsSaturationEx(r, 0, 5, 2, 45, 5);", "True", {5, 2}},
        {"IsSaturationEx(r, 0, 5, 2, 45, -5);", "True", {5, 2}},
        {"IsSaturationEx(r, 0, 5, 2, 45, 4.9);", "False", {-1, -1}},
        {"IsSaturationEx(r, 0, 6, 2, 45, 0.6);", "True", {6, 2}},
        {"IsSaturationInArea(r, 0, 5, 2, 7, 2, x);", "False", {-1, -1}},
        {"IsSaturationInAreaEx(r, 0, 6, 2, 7, 2, 22.8, 0.1);", "True", {6, 2}},
        {"IsSaturation(r, 0, q, 2, 50);", "True", {-1, -1}},
        {"IsSaturation(r, nothing, 5, 2, 50);", "False", {-1, -1}},
    });
}

TEST(ColorSearch, VectorScanFindsEveryPositionAndRespectsTheBox) {
    // Finds at every offset of a 16-pixel chunk and in the tail, for areas
    // with and without whole rows; the answer must equal a plain scan.
    std::mt19937 random(7);
    PixelGrid grid = filledGrid(37, 9, makePixel(10, 20, 30));
    screen::ByteBox box{100, 100, 20, 25, 30, 30};
    for (int trial = 0; trial < 400; ++trial) {
        PixelGrid g = grid;
        const int hits = trial % 3;
        for (int h = 0; h < hits; ++h)
            g.at(random() % 37, random() % 9) = makePixel(100, static_cast<uint8_t>(20 + random() % 6), 30);
        g.at(random() % 37, random() % 9) = makePixel(100, 26, 30);  // just outside green
        const screen::Area area = trial % 2 ? screen::wholeImage(g)
                                            : screen::Area{int32_t(random() % 10), int32_t(random() % 4),
                                                           int32_t(20 + random() % 20), int32_t(5 + random() % 6)};
        std::optional<screen::Position> plain;
        for (int32_t y = std::max(area.y1, 0); !plain && y <= std::min(area.y2, 8); ++y)
            for (int32_t x = std::max(area.x1, 0); !plain && x <= std::min(area.x2, 36); ++x)
                if (screen::inBox(box, g.at(x, y))) plain = screen::Position{x, y};
        EXPECT_EQ(screen::findFirstInRange(g, box, area), plain) << trial;
    }
}

TEST(ColorBox, BoundsBeyondBytesAndReversedBounds) {
    EXPECT_TRUE(screen::inBox(screen::byteBoxOf({-5, -5, -5}, {300, 300, 300}), makePixel(255, 0, 7)));
    EXPECT_FALSE(screen::byteBoxOf({10, 0, 0}, {5, 255, 255}).possible);
    EXPECT_TRUE(screen::inBox(screen::byteBoxOf({}, {}), 0));
    EXPECT_FALSE(screen::inBox(screen::byteBoxOf({}, {}), makePixel(0, 0, 1)));
}

// The mean over the area; the figures of single pixels are in
// tests/scripts/screen/measure.tk.
TEST(Saturation, TheMeanOfTheAreaWherePositionsOutsideCopyThePixelReadLast) {
    PixelGrid g = filledGrid(2, 2, 0);
    g.at(1, 0) = grey(255);  // read last in row 0
    g.at(1, 1) = grey(128);
    const struct {
        screen::Area area;
        double sum;  // of red + green + blue over the area
        int count;
    } cases[] = {
        {{0, 0, 3, 0}, 765.0 * 3, 4},          // right of row 0: copies of white
        {{-2, 1, 1, 1}, 384, 4},                // left of row 1 before any read: black
        {{-1, 0, 1, 1}, 765.0 * 2 + 384, 6},   // left of row 1 copies the end of row 0
        {{0, 0, 1, 2}, 765.0 + 384 + 384 * 2, 6},  // the row below copies (1, 1)
        {{5, 5, 6, 6}, 0, 4},
        {{0, 1, 1, 1}, 384, 2},                 // black and grey 128: 25
    };
    for (const auto& c : cases)
        EXPECT_DOUBLE_EQ(screen::saturationOf(&g, c.area), c.sum / 3.0 / c.count / 256.0 * 100.0);
    EXPECT_EQ(screen::saturationOf(nullptr, {0, 0, 5, 5}), 0.0);
    EXPECT_EQ(screen::saturationOf(&g, {1, 0, 0, 1}), 0.0);  // x2 < x1
}

// A bad coordinate stores nothing: b keeps 3, and n is a new text variable
// holding what the look-up of its name gave.
TEST_F(SearchTest, GetSaturationAnswersInTheVariablesType) {
    runBody("Int(i, 3);\nDouble(d, 3);\nGetSaturation(t, 0, 6, 2);\nGetSaturation(i, 0, 6, 2);\n"
            "GetSaturationIn(d, 0, 5, 2, 7, 2);\nGetSaturation(e, nothing, 0, 0);\nDouble(b, 3);\n"
            "GetSaturation(b, imagesave0, abc, 5);\nGetSaturation(n, 0, abc, 5);");
    using engine::ValueKind;
    for (const auto& [name, value, kind] : {std::tuple{"t", "45.5729166666667", ValueKind::Text}, {"i", "46", ValueKind::Long},
                                            {"d", "31.8576388888889", ValueKind::Double}, {"e", "0", ValueKind::Text},
                                            {"b", "3", ValueKind::Double}, {"n", "n", ValueKind::Text}}) {
        EXPECT_EQ(valueOf(name), value) << name;
        EXPECT_EQ(typeOf(name), kind) << name;
    }
}

}  // namespace
}  // namespace tarvoke::test
