// The image store: how scripts name slots, and what capture, load and save
// leave behind when they succeed and when they fail.

#include <QTemporaryDir>
#include <filesystem>
#include <fstream>

#include "platform/qimage/qimagepictures.h"
#include "platform/bmpwriter.h"
#include "host/call.h"
#include "platform/pngwriter.h"
#include "screen_fixture.h"

namespace tarvoke::test {
namespace {

using platform::makePixel;
using platform::PixelGrid;

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

class StoreTest : public ScreenTest {};

// A capture into a slot reuses its buffer and forgets its sums; sstemp is the
// recorder's capture and no slot.
TEST_F(StoreTest, CaptureFillsTheNamedSlotWithTheScreen) {
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
TEST_F(StoreTest, LoadResolvesAgainstTheScriptFolder) {
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
// writes the last picture that passed through.
TEST_F(StoreTest, SaveWritesTheSlotOrTheLastPicture) {
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

    // A dry run writes no picture unless allowed.
    dryRunPictures.setFiles(&files, false);
    runBody("SaveImage(5, \"/home/me/notes.txt\");");
    EXPECT_TRUE(files.files.count("/home/me/notes.txt") == 0);
    EXPECT_EQ(fake.transcript.back(), "SavePicture \"/home/me/notes.txt\"");
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

}  // namespace
}  // namespace tarvoke::test
