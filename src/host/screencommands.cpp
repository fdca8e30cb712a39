// The image and colour rows of the host command table. Each branch resolves
// its parameters, converts them, calls the screen routine and answers. The
// ten true-or-false tests convert their coordinates in the same step as the
// test, so a coordinate that cannot be converted skips the test and the
// answer is true.

#include "host/screencommands.h"

#include <array>
#include <optional>

#include "engine/numeric.h"
#include "host/answers.h"
#include "host/session.h"
#include "screen/imagefiles.h"
#include "screen/routines.h"

namespace tarvoke::host {
namespace {

using engine::SC;
using screen::Area;

// The statement's parameters, resolved as the host commands see them.
class Params {
public:
    Params(SC& engine, int32_t line) : m_engine(engine), m_line(line) {}
    std::string text(int slot) const { return m_engine.GetVariableAsString(m_engine.statement(m_line).sParameter[slot - 1]); }
    std::optional<int16_t> int16(int slot) const { return engine::TextToInt16(text(slot)); }
    // A point (slots first, first + 1) as an area whose corners are equal.
    std::optional<Area> point(int first) const {
        const auto x = int16(first), y = int16(first + 1);
        if (!x || !y) return std::nullopt;
        return Area{*x, *y, *x, *y};
    }
    std::optional<Area> area(int first) const {
        const auto x1 = int16(first), y1 = int16(first + 1), x2 = int16(first + 2), y2 = int16(first + 3);
        if (!x1 || !y1 || !x2 || !y2) return std::nullopt;
        return Area{*x1, *y1, *x2, *y2};
    }

private:
    SC& m_engine;
    int32_t m_line;
};

class ScreenCommands {
public:
    ScreenCommands(SC& engine, int32_t line)
        : m_engine(engine), m_session(engine.session()), m_line(line), m_p(engine, line),
          m_last{m_session.intLastX, m_session.intLastY} {
        // The searches write "lx" and "ly" one by one.
        m_session.settleLastClick();
    }

    void loadImage() {
        const std::string image = m_p.text(1), path = m_p.text(2);
        if (m_session.platform.pictures)
            screen::LoadImage(m_session.imageTable, *m_session.platform.pictures, image,
                              screen::loadPath(m_session.sScriptFolder, path));
    }

    void saveImage() {
        const std::string image = m_p.text(1), path = m_p.text(2);
        if (m_session.platform.pictures)
            screen::SaveImage(m_session.imageTable, *m_session.platform.pictures, image, screen::slashPath(path));
    }

    void captureScreen() {
        const std::string image = m_p.text(1);
        if (m_session.platform.screen) screen::CaptureScreen(m_session.imageTable, *m_session.platform.screen, image);
    }

    void createColorRange() {
        const std::string range = m_p.text(1);
        std::array<int16_t, 6> values{};
        for (int i = 0; i < 6; ++i) {
            const auto value = m_p.int16(2 + i);
            if (!value) return;
            values[i] = *value;
        }
        screen::CreateColorRange(m_session.colorRanges, range, values);
    }

    void moveMouseToColorRange(std::optional<Area> area = std::nullopt) {
        const std::string image = m_p.text(1), range = m_p.text(2);
        moveTo(screen::MoveMouseToColorRange(m_session.imageTable, m_session.colorRanges, image, range, area));
    }

    void moveMouseToColorRangeEx() {
        const std::string image = m_p.text(1), range = m_p.text(2);
        const auto area = m_p.area(3);
        if (!area) return;
        moveTo(screen::MoveMouseToColorRange(m_session.imageTable, m_session.colorRanges, image, range, *area));
    }

    // The four numbers are offsets from the middle of the screen: its size in
    // twips (15 to the pixel) divided by 15 and by 2, as floats.
    void moveMouseToColorRangeFromCenterScreen() {
        const std::string image = m_p.text(1), range = m_p.text(2);
        if (!m_session.platform.screen) return;
        const platform::Size size = m_session.platform.screen->screenSize();
        const double middleX = size.width * 15.0 / 15.0 / 2.0, middleY = size.height * 15.0 / 15.0 / 2.0;
        std::array<int16_t, 4> corner{};
        for (int i = 0; i < 4; ++i) {
            const auto offset = m_p.int16(3 + i);
            if (!offset) return;
            const auto value = engine::roundToInt32((i % 2 == 0 ? middleX : middleY) + *offset);
            const auto coordinate = value ? engine::TextToInt16(std::to_string(*value)) : std::nullopt;
            if (!coordinate) return;
            corner[i] = *coordinate;
        }
        moveTo(screen::MoveMouseToColorRange(m_session.imageTable, m_session.colorRanges, image, range,
                                             Area{corner[0], corner[1], corner[2], corner[3]}));
    }

    void isPixel(bool inArea) {
        const std::string image = m_p.text(2);
        const auto area = inArea ? m_p.area(3) : m_p.point(3);
        const std::string range = m_p.text(inArea ? 7 : 5);
        answerTest(m_engine, m_line,
                   !area || screen::FindPixelInArea(m_session.imageTable, m_session.colorRanges, image, range, *area,
                                                    m_session.bFirstFind, m_last));
    }

    void isSaturation(bool inArea, bool withTolerance) {
        const std::string image = m_p.text(2);
        const auto area = inArea ? m_p.area(3) : m_p.point(3);
        const int valueSlot = inArea ? 7 : 5;
        const std::string value = m_p.text(valueSlot);
        const std::string tolerance = withTolerance ? m_p.text(valueSlot + 1) : "0";
        answerTest(m_engine, m_line,
                   !area || screen::TestSaturation(m_session.imageTable, image, value, tolerance, *area, m_last));
    }

    void getSaturation(bool inArea) {
        const std::string image = m_p.text(2);
        const auto area = inArea ? m_p.area(3) : m_p.point(3);
        answerMeasure(m_engine, m_line, [&]() -> std::optional<double> {
            if (!area) return std::nullopt;
            return screen::GetSaturation(m_session.imageTable, image, *area);
        });
    }

    void isImage(bool inArea, bool withTolerance) {
        const std::string image = m_p.text(2), sub = m_p.text(3);
        const auto area = inArea ? m_p.area(4) : m_p.point(4);
        const std::string tolerance = withTolerance ? m_p.text(inArea ? 8 : 6) : "0";
        answerTest(m_engine, m_line,
                   !area || screen::FindImage(m_session.imageTable, image, sub, tolerance, *area,
                                              m_session.bFirstFind, m_last, [this] { return m_session.stopPending(); }));
    }

private:
    void moveTo(std::optional<screen::Position> found) {
        if (!found) return;
        m_last.note(*found);
        if (m_session.platform.input) m_session.platform.input->setCursorPos(found->x, found->y);
    }

    SC& m_engine;
    Session& m_session;
    int32_t m_line;
    Params m_p;
    screen::LastPosition m_last;
};

}  // namespace

bool runScreenCommand(SC& engine, int32_t functionID, int32_t lngLine) {
    ScreenCommands command(engine, lngLine);
    switch (functionID) {
    case 119: command.loadImage(); break;
    case 120: command.saveImage(); break;
    case 132: command.captureScreen(); break;
    case 135: command.createColorRange(); break;
    case 137: command.moveMouseToColorRange(); break;
    case 138: command.moveMouseToColorRangeEx(); break;
    case 140: command.moveMouseToColorRangeFromCenterScreen(); break;
    case 142: command.isPixel(false); break;
    case 143: command.isPixel(true); break;
    case 144: command.isSaturation(false, false); break;
    case 145: command.isSaturation(true, false); break;
    case 146: command.isSaturation(false, true); break;
    case 147: command.isSaturation(true, true); break;
    case 150: command.getSaturation(false); break;
    case 151: command.getSaturation(true); break;
    case 152: command.isImage(false, false); break;
    case 153: command.isImage(false, true); break;
    case 154: command.isImage(true, false); break;
    case 155: command.isImage(true, true); break;
    default: return false;
    }
    return true;
}

}  // namespace tarvoke::host
