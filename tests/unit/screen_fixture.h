#pragma once
// An engine on the fake platform with picture files in memory, and grids
// built by the test.

#include <string>

#include "engine_fixture.h"
#include "platform/dryrun/dryrunpictures.h"
#include "platform/fake/fakepictures.h"
#include "platform/pixelgrid.h"

namespace tarvoke::test {

// A grid of one colour.
inline platform::PixelGrid filledGrid(int32_t width, int32_t height, uint32_t pixel) {
    platform::PixelGrid grid;
    grid.resize(width, height);
    for (auto& p : grid.pixels) p = pixel;
    return grid;
}

inline uint32_t grey(uint8_t level) { return platform::makePixel(level, level, level); }

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
    // A test answering in r, and the position it notes (-1, -1 when none), from the first find mode.
    struct Answer {
        const char* statement;
        const char* answer;
        std::pair<int, int> last;
    };
    void checkAnswers(std::initializer_list<Answer> cases) {
        for (const Answer& c : cases) {
            session.lastX = session.lastY = -1;
            session.firstFind = true;
            runBody(c.statement);
            EXPECT_EQ(valueOf("r"), c.answer) << c.statement;
            EXPECT_EQ(std::make_pair(int(session.lastX), int(session.lastY)), c.last) << c.statement;
        }
    }
    const platform::PixelGrid* slot(int index) const { return session.imageTable.image(index); }

    platform::fake::FakePictures files;
    platform::dryrun::DryRunPictures dryRunPictures;
    platform::dryrun::DryRunScreen screen;

private:
    platform::dryrun::LineSink sink() {
        return [this](std::string_view line) { fake.transcript.emplace_back(line); };
    }
};

}  // namespace tarvoke::test
