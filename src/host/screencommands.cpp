// The image and colour commands. Each handler takes its decoded slots and
// numbers, calls the screen routine and answers. The true-or-false tests and
// the measures are answered by the engine from what they return.

#include <array>
#include <optional>

#include "engine/numeric.h"
#include "host/call.h"
#include "host/explainer.h"
#include "screen/imagefiles.h"
#include "screen/routines.h"

namespace tarvoke::host {
namespace {

using engine::Answer;
using screen::Area;

// The routines write "lx" and "ly" one by one (the dispatch settled the
// last click before these rows).
screen::LastPosition lastPosition(Session& session) { return {session.lastX, session.lastY}; }

// A point (slots first, first + 1) as an area whose corners are equal, or
// the four slots from first.
Area pointAt(const Call& call, int first) {
    return {call.int16(first), call.int16(first + 1), call.int16(first), call.int16(first + 1)};
}
Area areaAt(const Call& call, int first) {
    return {call.int16(first), call.int16(first + 1), call.int16(first + 2), call.int16(first + 3)};
}

int rangeOf(const Call& call, int k) { return call.slot(k).value_or(0); }  // no range name: range 0

// A colour search that moves the cursor, over the whole image or an area.
Answer moveTo(Call& call, std::optional<screen::Area> area = std::nullopt) {
    Session& session = call.session;
    const int range = rangeOf(call, 1);
    const auto found = screen::firstInColorRange(session.imageTable, session.colorRanges, call.slot(0), range, area);
    screen::LastPosition last = lastPosition(session);
    if (!found) {
        if (session.explainer) session.explainer->colorMissed(call, 0, range, area, false);
        return {};
    }
    last.note(*found);
    if (session.platform.input) session.platform.input->setCursorPos(found->x, found->y);
    return {};
}

Answer testPixel(Call& call, bool inArea) {
    Session& s = call.session;
    const auto last = lastPosition(s);
    const Area area = inArea ? areaAt(call, 2) : pointAt(call, 2);
    const int range = rangeOf(call, inArea ? 6 : 4);
    const bool found =
        screen::findPixelInArea(s.imageTable, s.colorRanges, call.slot(1), range, area, s.firstFind, last);
    if (!found && s.explainer) s.explainer->colorMissed(call, 1, range, area, true);
    return Answer::test(found);
}

Answer testSaturation(Call& call, bool inArea, bool withTolerance) {
    Session& s = call.session;
    const auto last = lastPosition(s);
    const int valueSlot = inArea ? 6 : 4;
    const double tolerance = withTolerance ? call.number(valueSlot + 1) : 0.0;
    return Answer::test(screen::testSaturation(s.imageTable, call.slot(1), call.number(valueSlot), tolerance,
                                               inArea ? areaAt(call, 2) : pointAt(call, 2), last));
}

Answer measureSaturation(Call& call, bool inArea) {
    return Answer::measure(
        screen::getSaturation(call.session.imageTable, call.slot(1), inArea ? areaAt(call, 2) : pointAt(call, 2)));
}

Answer testImage(Call& call, bool inArea, bool withTolerance) {
    Session& s = call.session;
    const auto last = lastPosition(s);
    const double tolerance = withTolerance ? call.number(inArea ? 7 : 5) : 0.0;
    const Area area = inArea ? areaAt(call, 3) : pointAt(call, 3);
    const bool found = screen::findSubImage(s.imageTable, call.slot(1), call.slot(2), tolerance, area, s.firstFind,
                                            last, [&s] { return s.stopPending(); });
    if (!found && s.explainer)
        s.explainer->imageMissed(call, tolerance, area, inArea ? screen::ImageWalk::Area : screen::ImageWalk::Point);
    return Answer::test(found);
}

}  // namespace

namespace handlers {

Answer loadImage(Call& call) {
    Session& s = call.session;
    if (s.platform.pictures && call.slot(0))
        screen::loadImage(s.imageTable, *s.platform.pictures, *call.slot(0),
                          screen::loadPath(s.scriptFolder, call.text(1)));
    return {};
}

Answer saveImage(Call& call) {
    Session& s = call.session;
    if (s.platform.pictures && call.slot(0))
        screen::saveImage(s.imageTable, *s.platform.pictures, *call.slot(0), screen::slashPath(call.text(1)));
    return {};
}

// "sstemp" captures into the recorder's private capture; any other text
// must name an image.
Answer captureScreen(Call& call) {
    Session& s = call.session;
    if (!s.platform.screen) return {};
    if (call.text(0) == "sstemp") screen::captureTemp(s.imageTable, *s.platform.screen);
    else if (const auto slot = imageSlot(call.text(0))) screen::captureScreen(s.imageTable, *s.platform.screen, *slot);
    return {};
}

Answer createColorRange(Call& call) {
    if (!call.slot(0)) return {};
    std::array<int16_t, 6> values{};
    for (int i = 0; i < 6; ++i) values[i] = call.int16(1 + i);
    screen::createColorRange(call.session.colorRanges, *call.slot(0), values);
    return {};
}

Answer moveMouseToColorRange(Call& call) { return moveTo(call); }

Answer moveMouseToColorRangeEx(Call& call) { return moveTo(call, areaAt(call, 2)); }

// The four numbers are offsets from the middle of the screen: its size in
// twips (15 to the pixel) divided by 15 and by 2, as floats.
Answer moveMouseToColorRangeFromCenterScreen(Call& call) {
    Session& s = call.session;
    if (!s.platform.screen) return {};
    const platform::Size size = s.platform.screen->screenSize();
    const double middleX = size.width * 15.0 / 15.0 / 2.0, middleY = size.height * 15.0 / 15.0 / 2.0;
    std::array<int16_t, 4> corner{};
    for (int i = 0; i < 4; ++i) {
        const auto value = engine::roundToInt32((i % 2 == 0 ? middleX : middleY) + call.int16(2 + i));
        const auto coordinate = value ? engine::textToInt16(std::to_string(*value)) : std::nullopt;
        if (!coordinate) return {};
        corner[i] = *coordinate;
    }
    return moveTo(call, Area{corner[0], corner[1], corner[2], corner[3]});
}

Answer isPixel(Call& call) { return testPixel(call, false); }
Answer isPixelIn(Call& call) { return testPixel(call, true); }
Answer isSaturation(Call& call) { return testSaturation(call, false, false); }
Answer isSaturationInArea(Call& call) { return testSaturation(call, true, false); }
Answer isSaturationEx(Call& call) { return testSaturation(call, false, true); }
Answer isSaturationInAreaEx(Call& call) { return testSaturation(call, true, true); }
Answer getSaturation(Call& call) { return measureSaturation(call, false); }
Answer getSaturationIn(Call& call) { return measureSaturation(call, true); }
Answer isImage(Call& call) { return testImage(call, false, false); }
Answer isImageEx(Call& call) { return testImage(call, false, true); }
Answer isImageInArea(Call& call) { return testImage(call, true, false); }
Answer isImageInAreaEx(Call& call) { return testImage(call, true, true); }

Answer locateImage(Call& call) {
    Session& s = call.session;
    const auto last = lastPosition(s);
    const Area area = areaAt(call, 3);
    const double tolerance = call.number(7);
    const bool found = screen::locateSubImage(s.imageTable, call.slot(1), call.slot(2), tolerance, area, s.firstFind,
                                              last, [&s] { return s.stopPending(); });
    if (!found && s.explainer) s.explainer->imageMissed(call, tolerance, area, screen::ImageWalk::Whole);
    return Answer::test(found);
}

}  // namespace handlers
}  // namespace tarvoke::host
