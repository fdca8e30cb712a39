// The screen commands on the fake platform with picture files in memory:
// the image store (how scripts name slots, what capture, load and save leave
// behind), colour ranges and their searches, the saturation tests, and image
// matching (the filter and verification windows, the reference pixel (1,1),
// the walk past the sub-image's edge, the find modes).

#include <QTemporaryDir>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "engine_fixture.h"
#include "host/call.h"
#include "host/explainer.h"
#include "platform/dryrun/dryrunpictures.h"
#include "platform/fake/fakepictures.h"
#include "platform/pngwriter.h"
#include "platform/qimage/qimagepictures.h"
#include "screen/colorsearch.h"
#include "screen/imagematch.h"
#include "screen/locate.h"
#include "screen/saturation.h"

namespace tarvoke::test {
namespace {

using platform::makePixel;
using platform::PixelGrid;

// A grid of one colour.
PixelGrid filledGrid(int32_t width, int32_t height, uint32_t pixel) {
    PixelGrid grid;
    grid.resize(width, height);
    for (auto& p : grid.pixels) p = pixel;
    return grid;
}

uint32_t grey(uint8_t level) { return makePixel(level, level, level); }

class ScreenTest : public EngineTest {
protected:
    ScreenTest() : dryRunPictures(sink()), screen(sink()) {
        dryRunPictures.setFiles(&files, true);
        session.platform.pictures = &dryRunPictures;
        session.platform.screen = &screen;
        session.scriptFolder = "/scripts/";
    }

    // Puts grid into slot index, as a load of a picture would.
    void putImage(int index, const platform::PixelGrid& grid) {
        files.files["/pictures/" + std::to_string(index)] = grid;
        session.scriptFolder = "/pictures/";
        run("Function(Main);\nLoadImage(" + std::to_string(index) + ", " + std::to_string(index) +
            ");\nEndFunction();");
        session.scriptFolder = "/scripts/";
        fake.transcript.clear();
    }
    // Runs the statements as the body of Main.
    void runBody(const std::string& body) { run("Function(Main);\n" + body + "\nEndFunction();"); }
    // A test answering in r, the position it notes (-1, -1 when none) and
    // what it did on the platform, from the first find mode.
    struct Answer {
        const char* statement;
        const char* answer;
        std::pair<int, int> last;
        std::vector<std::string> transcript = {};
    };
    void checkAnswers(std::initializer_list<Answer> cases) {
        for (const Answer& c : cases) {
            session.lastX = session.lastY = -1;
            session.firstFind = true;
            fake.transcript.clear();
            runBody(c.statement);
            EXPECT_EQ(valueOf("r"), c.answer) << c.statement;
            EXPECT_EQ(last(), c.last) << c.statement;
            EXPECT_EQ(fake.transcript, c.transcript) << c.statement;
        }
    }
    const platform::PixelGrid* slot(int index) const { return session.imageTable.image(index); }
    // The position of the last find.
    std::pair<int, int> last() const { return {session.lastX, session.lastY}; }

    platform::fake::FakePictures files;
    platform::dryrun::DryRunPictures dryRunPictures;
    platform::dryrun::DryRunScreen screen;

private:
    platform::dryrun::LineSink sink() {
        return [this](std::string_view line) { fake.transcript.emplace_back(line); };
    }
};

TEST(ImageName, FollowsTheRemovalAndNumberRule) {
    const std::pair<const char*, std::optional<int16_t>> cases[] = {
        {"imagesave7", 7},      {"7", 7},           {"imagesave7.5", 8},   {"imagesave6.5", 6},
        {"imagesave50", 50},    {"imagesave51", 51}, {"imagesaveimagesave3", 3},
        {"ImageSave7", std::nullopt}, {"imagesave", std::nullopt}, {"", std::nullopt},
        {"imagesave99999", std::nullopt}, {"picture", std::nullopt}, {"imagesave-1", -1},
    };
    for (const auto& [name, index] : cases) EXPECT_EQ(host::imageSlot(name), index) << name;
}

TEST(RangeName, ReadsTheEleventhCharacterOnly) {
    const std::pair<const char*, std::optional<int16_t>> cases[] = {{"colorrange0", 0}, {"colorrange9", 9}, {"colorrange10", 1}, {"colorrange12", 1},
                 {"abcdefghij5", 5}, {"colorrange", std::nullopt}, {"colorrangex", std::nullopt}};
    for (const auto& [name, index] : cases) EXPECT_EQ(host::rangeSlot(name), index) << name;
}


// A capture into a slot reuses its buffer and forgets its sums; sstemp is the
// recorder's capture and no slot.
TEST_F(ScreenTest, CaptureFillsTheNamedSlotWithTheScreen) {
    screen.setPicture(filledGrid(4, 3, grey(9)));
    runBody("CaptureScreen(imagesave7);\nCaptureScreen(50);\nCaptureScreen(imagesave51);\nCaptureScreen(\"ImageSave2\");\n"
            "CaptureScreen(sstemp);");
    ASSERT_NE(slot(7), nullptr);
    EXPECT_EQ(slot(7)->width, 4);
    EXPECT_EQ(slot(7)->pixels, filledGrid(4, 3, grey(9)).pixels);
    for (int i = 0; i < screen::ImageStore::kSlotCount; ++i) EXPECT_EQ(slot(i) != nullptr, i == 7 || i == 50) << i;
    EXPECT_EQ(session.imageTable.tempCapture().width, 4);
    // The out-of-store capture is still made; the text that is no name is not.
    EXPECT_EQ(fake.transcript, std::vector<std::string>(4, "CaptureScreen"));
    const uint32_t* before = slot(7)->pixels.data();
    EXPECT_EQ(session.imageTable.sums(7)->sums[0], 27);
    screen.setPicture(filledGrid(4, 3, grey(20)));
    runBody("CaptureScreen(7);");
    EXPECT_EQ(slot(7)->pixels.data(), before);
    EXPECT_EQ(session.imageTable.sums(7)->sums[0], 60);
}

// A load resolves against the script folder; a failed one empties the slot.
TEST_F(ScreenTest, LoadResolvesAgainstTheScriptFolder) {
    files.files["/scripts/pic.bmp"] = filledGrid(3, 2, grey(5));
    files.files["/scripts/sub/pic.bmp"] = filledGrid(1, 1, grey(6));
    runBody("LoadImage(1, pic.bmp);\nLoadImage(2, \"\\pic.bmp\");\nLoadImage(3, \"sub\\pic.bmp\");\nLoadImage(4, /pic.bmp);");
    for (int i : {1, 2, 4}) ASSERT_NE(slot(i), nullptr) << i;
    EXPECT_EQ(slot(3)->pixels, filledGrid(1, 1, grey(6)).pixels);
    EXPECT_EQ(fake.transcript[2], "LoadPicture \"/scripts/sub/pic.bmp\"");
    fake.transcript.clear();
    runBody("LoadImage(3, missing.png);\nLoadImage(imagesave, missing.png);");
    EXPECT_EQ(slot(3), nullptr);
    EXPECT_EQ(fake.transcript, (std::vector<std::string>{"LoadPicture \"/scripts/missing.png\""}));
}

// A save writes the slot with its path unresolved; a save of an empty slot
// writes the last picture that passed through. That a dry run writes none
// unless allowed: tests/player/safety_test.py.
TEST_F(ScreenTest, SaveWritesTheSlotOrTheLastPicture) {
    putImage(5, filledGrid(2, 2, grey(3)));
    runBody("SaveImage(5, \"out\\a.bmp\");");
    ASSERT_TRUE(files.files.count("out/a.bmp"));
    EXPECT_EQ(files.files["out/a.bmp"].pixels, filledGrid(2, 2, grey(3)).pixels);
    screen.setPicture(filledGrid(2, 1, grey(77)));
    runBody("CaptureScreen(60);\nSaveImage(9, a.bmp);\nSaveImage(60, b.bmp);");
    EXPECT_EQ(files.files["a.bmp"].pixels, filledGrid(2, 1, grey(77)).pixels);
    EXPECT_EQ(files.files["b.bmp"].pixels, filledGrid(2, 1, grey(77)).pixels);

    // A failed load clears the work surface: nothing is left to write.
    files.files.clear();
    runBody("LoadImage(1, missing.png);\nSaveImage(9, c.bmp);");
    EXPECT_FALSE(files.files.count("c.bmp"));
    EXPECT_EQ(fake.transcript.back(), "SavePicture \"c.bmp\"");
}

// Pictures on disk, through QImage and our bitmap writer.
class PictureFiles : public ::testing::Test {
protected:
    static PixelGrid pattern() {
        PixelGrid grid;
        grid.resize(7, 5);  // 7 * 3 bytes: rows need padding in a bitmap
        for (int32_t y = 0; y < grid.height; ++y)
            for (int32_t x = 0; x < grid.width; ++x)
                grid.at(x, y) = makePixel(static_cast<uint8_t>(x * 36), static_cast<uint8_t>(y * 60),
                                          static_cast<uint8_t>(255 - x * y));
        return grid;
    }
    std::string path(const char* name) const { return m_dir.filePath(name).toStdString(); }

    QTemporaryDir m_dir;
    platform::qimage::QImagePictures m_pictures;
};

// A bitmap (whatever the extension) from our writer and the headless run's
// PNG screenshot read back pixel for pixel. Pictures made elsewhere are read
// in the screen scripts (tests/scripts/screen).
TEST_F(PictureFiles, WrittenPicturesReadBackPixelForPixel) {
    std::string error;
    ASSERT_TRUE(m_pictures.save(path("a.png"), pattern()));
    ASSERT_TRUE(platform::savePngFile(path("shot.png"), pattern(), error)) << error;
    char magic[2] = {};
    std::ifstream(path("a.png"), std::ios::binary).read(magic, 2);
    EXPECT_EQ(std::string(magic, 2), "BM");
    for (const char* name : {"a.png", "shot.png"}) {
        PixelGrid back;
        ASSERT_TRUE(m_pictures.load(path(name), back)) << name;
        EXPECT_EQ(back.width, 7) << name;
        EXPECT_EQ(back.height, 5) << name;
        EXPECT_EQ(back.pixels, pattern().pixels) << name;
    }
}

// A file that is no picture, or none, reads as nothing; a failed save leaves
// the file that was there as it was, and nothing beside it.
TEST_F(PictureFiles, FailuresLeaveTheFilesAsTheyWere) {
    std::ofstream(path("junk.png")) << "not a picture";
    PixelGrid back = pattern();
    EXPECT_FALSE(m_pictures.load(path("junk.png"), back));
    EXPECT_TRUE(back.empty());
    EXPECT_FALSE(m_pictures.load(path("missing.bmp"), back));
    std::ofstream(path("keep.bmp")) << "old";
    EXPECT_FALSE(m_pictures.save(path("keep.bmp"), PixelGrid{}));
    EXPECT_FALSE(m_pictures.save(path("nofolder/x.bmp"), pattern()));
    std::ifstream in(path("keep.bmp"));
    std::string text;
    in >> text;
    EXPECT_EQ(text, "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_dir.path().toStdString()),
                            std::filesystem::directory_iterator{}), 2);
}

// Colour ranges, the searches for them, and the saturation tests.

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
        screen.setSize({10, 8});
    }
};

TEST_F(SearchTest, CreateColorRangeWithABadPartStoresNothing) {
    runBody("CreateColorRange(colorrange4, 1, 2, 3, 4, 5, x);\nCreateColorRange(colorrange4, 1, 2, 3, 4, 5, 40000);\n"
            "CreateColorRange(colorrange, 1, 2, 3, 4, 5, 6);\nCreateColorRange(colorrange0, 1, 2, 3, 4, 5);");
    EXPECT_EQ(session.colorRanges.colorRangeMin[4], (screen::ColorBound{199, 49, 99}));
    EXPECT_EQ(session.colorRanges.colorRangeMin[0], (screen::ColorBound{}));
}

TEST_F(SearchTest, MoveMouseGoesToTheFirstFindInReadingOrder) {
    checkAnswers({  // the searches answer nothing: r reads as its own name
        {"MoveMouseToColorRange(imagesave0, colorrange4);", "r", {6, 2}, {"SetCursorPos 6 2"}},
        {"MoveMouseToColorRangeEx(0, colorrange4, 0, 3, 9, 7);", "r", {3, 5}, {"SetCursorPos 3 5"}},
        {"MoveMouseToColorRangeEx(0, colorrange4, 6, 2, 6, 2);", "r", {6, 2}, {"SetCursorPos 6 2"}},
        {"MoveMouseToColorRangeEx(0, colorrange4, 7, 0, 2, 7);", "r", {-1, -1}},  // x2 < x1
        {"MoveMouseToColorRangeEx(0, colorrange4, -5, -5, 100, 100);", "r", {6, 2}, {"SetCursorPos 6 2"}},
        {"MoveMouseToColorRangeEx(0, colorrange4, 0, 0, 9, x);", "r", {-1, -1}},  // no number
        {"MoveMouseToColorRange(imagesave1, colorrange4);", "r", {-1, -1}},  // empty slot
        {"MoveMouseToColorRange(nothing, colorrange4);", "r", {-1, -1}},
        // A range name that cannot be read is range 0, which holds black only.
        {"MoveMouseToColorRange(0, colorrange);", "r", {7, 2}, {"SetCursorPos 7 2"}},
        // The centre of a 10 x 8 screen is (5, 4).
        {"MoveMouseToColorRangeFromCenterScreen(0, colorrange4, -2, 1, 4, 3);", "r", {3, 5}, {"SetCursorPos 3 5"}},
        {"MoveMouseToColorRangeFromCenterScreen(0, colorrange4, 0, 0, 4, 3);", "r", {-1, -1}},
        {"RandomFindMode(); MoveMouseToColorRange(0, colorrange4);", "r", {6, 2}, {"SetCursorPos 6 2"}},
    });
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

// A grey-ish pixel whose colour bytes add up to sum.
uint32_t withSum(int sum) {
    const int r = std::min(sum, 255), g = std::min(sum - r, 255), b = sum - r - g;
    return makePixel(static_cast<uint8_t>(r), static_cast<uint8_t>(g), static_cast<uint8_t>(b));
}

// Points: a pixel is compared with the sub-image's pixel (1,1); rows and
// columns 0 of the sub-image take no part; an empty slot reads black.
TEST_F(ScreenTest, PointsAndAreasCompareFromSubImagePixel11) {
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

TEST_F(ScreenTest, FindModesDecideWhichMatchIsNoted) {
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
        {"RandomFindMode(); LocateImage(r, 0, 1, 0, 0, 7, 3, 0);", "True", {4, 0}},  // the last in its row
        {"IsImageInArea(r, 0, 1, 3, 0, 0, 3);", "False", {-1, -1}},  // x2 < x1
        {"IsImageInArea(r, 0, 1, 2, 0, 4, 3);", "False", {-1, -1}},
    });
    // A failure keeps the find noted before it.
    session.lastX = 7, session.lastY = 8;
    runBody("IsImageInArea(r, 0, 1, 3, 0, 0, 3);\nIsImageInArea(r, 0, 1, 2, 0, 4, 3);");
    EXPECT_EQ(last(), std::make_pair(7, 8));
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

// --explain on the fake platform: the picture through the platform's PNG
// saving, enlarged 8 times, the closest place framed in magenta, its first
// mismatch in yellow. Its lines are in tests/scripts/screen/locate.tk.
TEST_F(ScreenTest, ExplainMarksTheClosestPlace) {
    host::Explainer explainer("/explain", files, [](std::string_view) {});
    session.explainer = &explainer;
    PixelGrid image = filledGrid(6, 4, grey(100));
    for (int i = 0; i < 4; ++i) image.at(2 + i % 2, 1 + i / 2) = grey(50);
    image.at(3, 1) = grey(54);  // the first mismatch
    putImage(0, image);
    putImage(1, filledGrid(2, 2, grey(50)));
    runBody("LocateImage(r, 0, 1, 0, 0, 5, 3, 0);");
    const PixelGrid& picture = files.files.at("/explain/explain-1.png");
    EXPECT_EQ(std::make_pair(picture.width, picture.height), std::make_pair(48, 32));
    EXPECT_EQ(picture.at(15, 7), makePixel(255, 0, 255));   // the frame's corner outside (2,1)
    EXPECT_EQ(picture.at(32, 24), makePixel(255, 0, 255));  // and outside (3,2)
    EXPECT_EQ(picture.at(23, 12), makePixel(255, 255, 0));  // left of (3,1)
    EXPECT_EQ(picture.at(0, 0), grey(100));
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
