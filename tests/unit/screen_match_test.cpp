// Image matching: the filter and verification windows, the reference pixel
// (1,1), the walk past the sub-image's edge, the find modes.

#include <random>

#include "host/explainer.h"
#include "screen/imagematch.h"
#include "screen/locate.h"
#include "screen/saturation.h"
#include "screen_fixture.h"

namespace tarvoke::test {
namespace {

using platform::makePixel;
using platform::PixelGrid;

// A grey-ish pixel whose colour bytes add up to sum.
uint32_t withSum(int sum) {
    const int r = std::min(sum, 255), g = std::min(sum - r, 255), b = sum - r - g;
    return makePixel(static_cast<uint8_t>(r), static_cast<uint8_t>(g), static_cast<uint8_t>(b));
}

class MatchTest : public ScreenTest {};

// Points: a pixel is compared with the sub-image's pixel (1,1); rows and
// columns 0 of the sub-image take no part; an empty slot reads black.
TEST_F(MatchTest, PointsAndAreasCompareFromSubImagePixel11) {
    PixelGrid sub = filledGrid(2, 2, makePixel(1, 2, 3));
    sub.at(1, 1) = grey(128);  // brightness 50, sum 384
    putImage(1, sub);
    PixelGrid image = filledGrid(4, 1, 0);
    image.at(0, 0) = withSum(391);  // 50.9, and red 255, green 136: brightness is compared, not colour
    image.at(1, 0) = withSum(393);  // 51.2: passes the filter, fails verification
    image.at(2, 0) = grey(128);
    image.at(3, 0) = withSum(385);
    putImage(0, image);
    checkAnswers({
        {"IsImage(r, 0, 1, 0, 0);", "True", {0, 0}},
        {"IsImage(r, 0, 1, 1, 0);", "False", {-1, -1}},
        {"IsImageEx(r, 0, 1, 1, 0, 1);", "True", {1, 0}},
        {"IsImageEx(r, 0, 1, 2, 0, -1);", "True", {2, 0}},  // equal brightness only
        {"IsImageEx(r, 0, 1, 3, 0, -1);", "False", {-1, -1}},
        {"IsImageEx(r, 0, 1, 2, 0, -2);", "False", {-1, -1}},  // the verification window is empty
        {"IsImageEx(r, 0, 1, 2, 0, abc);", "True", {2, 0}},    // a tolerance that is no number is 0
        {"IsImage(r, 0, 1, x, 0);", "True", {-1, -1}},          // a coordinate that is no number
        {"IsImage(r, 0, nothing, 2, 0);", "False", {-1, -1}},
    });
    sub = filledGrid(3, 3, grey(40));
    for (int i = 0; i < 3; ++i) sub.at(i, 0) = sub.at(0, i) = grey(250);
    putImage(0, filledGrid(6, 6, grey(40)));
    putImage(1, sub);
    checkAnswers({{"IsImageInArea(r, 0, 1, 2, 2, 3, 3);", "True", {2, 2}}});
    putImage(0, filledGrid(3, 3, 0));
    putImage(1, filledGrid(1, 1, grey(255)));  // no pixel (1,1): black reference
    checkAnswers({
        {"IsImage(r, 0, 9, 1, 1);", "True", {1, 1}},  // the empty sub-image has reference 0
        {"IsImage(r, 8, 9, 1, 1);", "True", {1, 1}},  // both empty
        {"IsImage(r, 0, 1, 1, 1);", "True", {1, 1}},
    });
}

TEST_F(MatchTest, FindModesDecideWhichMatchIsNoted) {
    // Two bright 2 x 2 patches in a dark image; the sub-image is one patch
    // with the dark surplus to its right and below (3 x 3 with (1,1) bright).
    PixelGrid image = filledGrid(8, 4, grey(0));
    for (int x : {1, 5}) image.at(x, 1) = grey(200);
    PixelGrid sub = filledGrid(3, 3, grey(0));
    sub.at(1, 1) = grey(200);
    putImage(0, image);
    putImage(1, sub);
    checkAnswers({
        // The walk runs to (x2, y2) = (6, 2): the sub-image covers it only from
        // candidates whose walk stays within two columns and rows; the first
        // candidate passing the filter fails its walk.
        {"IsImageInArea(r, 0, 1, 0, 0, 6, 2);", "True", {5, 1}},
        {"RandomFindMode(); IsImageInArea(r, 0, 1, 0, 0, 7, 3);", "True", {5, 1}},
        {"IsImageInArea(r, 0, 1, 3, 0, 0, 3);", "False", {-1, -1}},  // x2 < x1
        {"IsImageInArea(r, 0, 1, 2, 0, 4, 3);", "False", {-1, -1}},
    });
    // A failure keeps the find noted before it.
    session.lastX = 7, session.lastY = 8;
    runBody("IsImageInArea(r, 0, 1, 3, 0, 0, 3);\nIsImageInArea(r, 0, 1, 2, 0, 4, 3);");
    EXPECT_EQ(std::make_pair(int(session.lastX), int(session.lastY)), std::make_pair(7, 8));
    // Random mode answers what the last candidate that passed the filter gave:
    // a match at (1,1), then a later candidate passing the filter and failing.
    image = filledGrid(6, 3, grey(0));
    image.at(1, 1) = grey(100);
    image.at(4, 2) = withSum(300 + 12);  // filter window is +-3 points, verification +-1
    sub = filledGrid(2, 2, grey(0));
    sub.at(1, 1) = grey(100);
    putImage(0, image);
    putImage(1, sub);
    checkAnswers({
        {"RandomFindMode(); IsImageInArea(r, 0, 1, 1, 1, 1, 1);", "True", {1, 1}},
        {"RandomFindMode(); IsImageInArea(r, 0, 1, 0, 0, 5, 2);", "False", {-1, -1}},
    });
    // A slot matches itself, at (1,1).
    image.resize(9, 7);
    for (int32_t y = 0; y < 7; ++y)
        for (int32_t x = 0; x < 9; ++x) image.at(x, y) = withSum((x * 53 + y * 97) % 766);
    putImage(4, image);
    checkAnswers({{"IsImageInArea(r, 4, 4, 1, 1, 8, 6);", "True", {1, 1}}});
}

// --explain on the fake platform: the line, and the picture through the
// platform's PNG saving, enlarged 8 times, the closest place framed in
// magenta, its first mismatch in yellow.
TEST_F(MatchTest, ExplainPrintsWhyAndMarksTheClosestPlace) {
    std::vector<std::string> lines;
    host::Explainer explainer("/explain", files, [&](std::string_view line) { lines.emplace_back(line); });
    session.explainer = &explainer;
    PixelGrid image = filledGrid(6, 4, grey(100));
    for (int i = 0; i < 4; ++i) image.at(2 + i % 2, 1 + i / 2) = grey(50);
    image.at(3, 1) = grey(54);  // 12 sums: 1.5625 points, past tolerance 0 by 0.5625
    putImage(0, image);
    putImage(1, filledGrid(2, 2, grey(50)));
    runBody("LocateImage(r, 0, 1, 0, 0, 5, 3, 0);");
    EXPECT_EQ(valueOf("r"), "False");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], "explain: LocateImage(r, 0, 1, 0, 0, 5, 3, 0) is False; best at (2, 1): 1 of 4 pixels matched, "
                        "then (3, 1) wanted 19.53 found 21.09; tolerance 0.57 would match; explain-1.png");
    const PixelGrid& picture = files.files.at("/explain/explain-1.png");
    EXPECT_EQ(std::make_pair(picture.width, picture.height), std::make_pair(48, 32));
    EXPECT_EQ(picture.at(15, 7), makePixel(255, 0, 255));   // the frame's corner outside (2,1)
    EXPECT_EQ(picture.at(32, 24), makePixel(255, 0, 255));  // and outside (3,2)
    EXPECT_EQ(picture.at(23, 12), makePixel(255, 255, 0));  // left of (3,1)
    EXPECT_EQ(picture.at(0, 0), grey(100));
    runBody("LocateImage(r, 0, 1, 0, 0, 5, 3, 0.57);");
    EXPECT_EQ(valueOf("r"), "True");
    EXPECT_EQ(lines.size(), 1u);  // a find explains nothing
}

// LocateImage and the closest place read plainly, over every position where
// the whole sub-image lies in the area: a match has each pixel in the rule's
// verification window; the closest has the least largest difference, first
// among equals.
struct Plainly {
    std::optional<screen::Position> found;
    std::optional<screen::Closest> closest;
};
Plainly locatePlainly(const screen::SumPlane& image, const screen::SumPlane& sub, double t, screen::Area a,
                      bool firstFind) {
    Plainly plainly;
    for (int32_t Y = std::max(a.y1, 0); Y + sub.height - 1 <= std::min(a.y2, image.height - 1); ++Y)
        for (int32_t X = std::max(a.x1, 0); X + sub.width - 1 <= std::min(a.x2, image.width - 1); ++X) {
            bool all = true;
            int largest = 0;
            for (int32_t y = 0; y < sub.height; ++y)
                for (int32_t x = 0; x < sub.width; ++x) {
                    const double b = screen::brightnessOfSum(sub.row(y)[x]);
                    const double c = screen::brightnessOfSum(image.row(Y + y)[X + x]);
                    all = all && !(c < b - t - 1.0 || c > b + t + 1.0);
                    largest = std::max(largest, std::abs(image.row(Y + y)[X + x] - sub.row(y)[x]));
                }
            if (all && !(firstFind && plainly.found)) plainly.found = screen::Position{X, Y};
            if (!plainly.closest || largest < plainly.closest->difference) plainly.closest = screen::Closest{{X, Y}, largest};
        }
    return plainly;
}

// The fast matchers must give what the plain reading of their rules gives,
// for every tolerance sign, both modes, areas inside, across and outside the image.
TEST(ImageMatch, EqualsThePlainRuleOnRandomPictures) {
    std::mt19937 random(11);
    auto plane = [&](int w, int h, int levels) {
        screen::SumPlane p;
        p.width = w, p.height = h;
        p.sums.resize(static_cast<size_t>(w) * h);
        const int base = static_cast<int>(random() % 500);
        for (auto& s : p.sums) s = static_cast<uint16_t>(base + random() % levels);
        return p;
    };
    const double tolerances[] = {0, 1, 2.5, -1, -2, 10};
    int matches = 0, located = 0;
    for (int trial = 0; trial < 3000; ++trial) {
        const int levels = 1 + static_cast<int>(random() % 40);
        const screen::SumPlane image = plane(3 + random() % 30, 3 + random() % 12, levels);
        const screen::SumPlane sub = plane(1 + random() % 6, 1 + random() % 6, levels);
        const auto coordinate = [&](int size) { return static_cast<int32_t>(random() % (size + 4)) - 2; };
        screen::Area area{coordinate(image.width), coordinate(image.height), coordinate(image.width),
                          coordinate(image.height)};
        if (trial % 2) area = {0, 0, image.width - 1, image.height - 1};
        const double t = tolerances[trial % 6];
        const bool firstFind = trial % 3 != 0;
        const auto fast = screen::findImage(&image, &sub, t, area, firstFind);
        const auto plain = screen::findImagePlainly(&image, &sub, t, area, firstFind);
        ASSERT_EQ(fast.found, plain.found) << trial;
        ASSERT_EQ(fast.match, plain.match) << trial;
        matches += plain.match.has_value();
        const Plainly plainly = locatePlainly(image, sub, t, area, firstFind);
        const auto where = screen::locateImage(&image, &sub, t, area, firstFind);
        ASSERT_EQ(where, plainly.found) << trial;
        located += where.has_value();
        const auto closest = screen::closestImage(image, sub, {0, 0, sub.width, sub.height}, area, true);
        ASSERT_EQ(closest.has_value(), plainly.closest.has_value()) << trial;
        if (closest) {
            ASSERT_EQ(std::make_pair(closest->at, closest->difference),
                      std::make_pair(plainly.closest->at, plainly.closest->difference)) << trial;
        }
    }
    EXPECT_GT(matches, 100);  // the cases are not all misses
    EXPECT_GT(located, 100);
}

// A uniform picture matches everywhere, and each candidate walks the rest of
// the area: on a screen-sized area that takes hours. A stop ends it, finding nothing.
TEST(ImageMatch, AStopEndsTheSearch) {
    screen::SumPlane image, sub;
    image.width = image.height = 1000;
    image.sums.assign(1000 * 1000, 300);
    sub.width = sub.height = 4;
    sub.sums.assign(16, 300);
    for (const screen::Area area : {screen::Area{0, 0, 999, 999}, screen::Area{-5, -5, 999, 999}}) {
        int looks = 0;
        const auto result = screen::findImage(&image, &sub, 1, area, false, [&looks] { return ++looks == 3; });
        EXPECT_FALSE(result.found);
        EXPECT_FALSE(result.match);
        EXPECT_EQ(looks, 3);
    }
}

}  // namespace
}  // namespace tarvoke::test
