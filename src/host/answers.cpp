#include "host/answers.h"

#include "engine/numeric.h"

namespace tarvoke::host {
namespace {

constexpr int32_t kSet = 11;

std::string rawFirstParameter(engine::SC& engine, int32_t lngLine) {
    if (lngLine < 1 || lngLine > engine.statementCount()) return {};
    return engine.statement(lngLine).sParameter[0];
}

}  // namespace

int32_t prepareAnswer(engine::SC& engine, int32_t lngLine) {
    // GetVariable may strip quotes from the text it is given; it gets a copy.
    std::string name = rawFirstParameter(engine, lngLine);
    engine.GetVariable(name);
    return engine.valueSlot().lngValueType;
}

void answerTest(engine::SC& engine, int32_t lngLine, bool passed) {
    const int32_t type = prepareAnswer(engine, lngLine);
    engine::ValueSlot& slot = engine.valueSlot();
    if (type == engine::kLong) slot.lngValue = passed ? 0 : 1;
    else if (type == engine::kDouble) slot.dblValue = passed ? 0.0 : 1.0;
    else slot.sValue = passed ? "True" : "False";
    engine.AddSetVariable(rawFirstParameter(engine, lngLine), type, kSet);
}

void storeMeasure(engine::SC& engine, int32_t lngLine, int32_t type, double value) {
    engine::ValueSlot& slot = engine.valueSlot();
    if (type == engine::kLong) {
        const auto rounded = engine::roundToInt32(value);
        if (!rounded) return;
        slot.lngValue = *rounded;
    } else if (type == engine::kDouble) {
        slot.dblValue = value;
    } else {
        slot.sValue = engine::doubleToText(value);
    }
    engine.AddSetVariable(rawFirstParameter(engine, lngLine), type, kSet);
}

}  // namespace tarvoke::host
