#include "host/explainer.h"

#include <cstdio>

#include "engine/commands.h"
#include "host/call.h"
#include "screen/colorsearch.h"

namespace tarvoke::host {
namespace {

using screen::Area;
using screen::Position;

// The statement as the script wrote it, with the texts the load made of its parameters.
std::string statementText(const Call& call) {
    const engine::Statement& statement = call.engine.statement(call.engine.currentLine());
    std::string text(engine::scriptName(static_cast<engine::Command>(statement.number)));
    text += '(';
    for (size_t k = 0; k < statement.parameters.stored(); ++k) {
        if (k > 0) text += ", ";
        text += statement.parameters[k];
    }
    return text + ')';
}

// Two decimals at most, without trailing zeros: brightness steps are 0.13.
std::string decimals(double value) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.2f", value);
    std::string text = buffer;
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
    return text == "-0" ? "0" : text;
}

std::string at(Position p) { return "(" + std::to_string(p.x) + ", " + std::to_string(p.y) + ")"; }

std::string emptySlot(const char* what, std::optional<int16_t> slot) {
    if (!slot) return std::string("the ") + what + " names no slot";
    return std::string(what) + " slot " + std::to_string(*slot) + " is empty";
}

std::string bounds(const char* name, int lo, int hi) {
    return std::string(name) + " " + std::to_string(lo) + "-" + std::to_string(hi);
}

}  // namespace

void Explainer::imageMissed(const Call& call, double tolerance, Area area, screen::ImageWalk walk) {
    using Reason = screen::ImageMiss::Reason;
    Session& s = call.session;
    const screen::SumPlane* image = call.slot(1) ? s.imageTable.sums(*call.slot(1)) : nullptr;
    const screen::SumPlane* sub = call.slot(2) ? s.imageTable.sums(*call.slot(2)) : nullptr;
    const screen::ImageMiss miss =
        screen::explainImageMiss(image, sub, tolerance, area, walk, [&s] { return s.stopPending(); });
    std::string line = "explain: " + statementText(call) + " is False; ";
    switch (miss.reason) {
    case Reason::Stopped: return;
    case Reason::NoImage: line += emptySlot("image", call.slot(1)); break;
    case Reason::NoSubImage:
        line += sub ? "the sub-image has no pixel (1,1)" : emptySlot("sub-image", call.slot(2));
        break;
    case Reason::NoRoom:
        line += "the sub-image (" + std::to_string(sub->width) + "x" + std::to_string(sub->height) +
                ") fits nowhere in the area on the image";
        break;
    case Reason::Closest:
        line += "best at " + at(miss.best) + ": " + std::to_string(miss.matched) + " of " +
                std::to_string(miss.pixels) + " pixels matched";
        if (miss.mismatch)
            line += ", then " + at(*miss.mismatch) + " wanted " + decimals(miss.wanted) + " found " +
                    decimals(miss.found) + "; tolerance " + decimals(miss.tolerance) + " would match";
        if (miss.walksOn)
            line += "; the walk runs on past the sub-image to " + at({area.x2, area.y2}) +
                    ": LocateImage compares over the sub-image's size";
        line += picture(call, *s.imageTable.image(*call.slot(1)), miss.searched, miss.compared, miss.mismatch);
        break;
    }
    m_print(line);
}

void Explainer::colorMissed(const Call& call, int imageParameter, int range, std::optional<Area> area, bool test) {
    using Reason = screen::ColorMiss::Reason;
    Session& s = call.session;
    const auto slot = call.slot(imageParameter);
    const platform::PixelGrid* grid = slot ? s.imageTable.image(*slot) : nullptr;
    const screen::ColorBound& min = s.colorRanges.colorRangeMin[range];
    const screen::ColorBound& max = s.colorRanges.colorRangeMax[range];
    const screen::ColorMiss miss = screen::explainColorMiss(grid, screen::byteBoxOf(min, max), area);
    const std::string range3 = bounds("red", min.Red, max.Red) + ", " + bounds("blue", min.Blue, max.Blue) + ", " +
                               bounds("green", min.Green, max.Green);
    std::string line = "explain: " + statementText(call) + (test ? " is False; " : " found nothing; ");
    switch (miss.reason) {
    case Reason::NoImage: line += emptySlot("image", slot); break;
    case Reason::NoColor: line += "the range holds no colour: " + range3; break;
    case Reason::NoRoom: line += "the area lies off the image"; break;
    case Reason::Closest:
        line += "nearest colour red " + std::to_string(platform::redOf(miss.color)) + ", blue " +
                std::to_string(platform::blueOf(miss.color)) + ", green " +
                std::to_string(platform::greenOf(miss.color)) + " at " + at(miss.at) + " is " +
                std::to_string(miss.distance) + " from the range " + range3;
        const Area mark{miss.at.x, miss.at.y, miss.at.x, miss.at.y};
        line += picture(call, *grid, area.value_or(screen::wholeImage(*grid)), mark, std::nullopt);
        break;
    }
    m_print(line);
}

std::string Explainer::picture(const Call& call, const platform::PixelGrid& grid, Area shown, Area mark,
                               std::optional<Position> spot) {
    const int number = m_pictureOf.try_emplace(call.engine.currentLine(), int(m_pictureOf.size()) + 1).first->second;
    const std::string name = "explain-" + std::to_string(number) + ".png";
    if (!m_pictures.savePng(m_folder + "/" + name, screen::markedPicture(grid, shown, mark, spot)))
        return "; could not write " + name;
    return "; " + name;
}

}  // namespace tarvoke::host
