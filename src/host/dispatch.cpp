// The dispatch of the host commands: the row's shape decodes the parameters,
// then the row's handler runs. The language's rule for a failed step lives
// here once: a parameter that does not convert skips the command, except that
// a test then answers true (its coordinates are converted in the same step
// as the test) and a measure stores nothing.

#include "host/dispatch.h"

#include <string>

#include "engine/numeric.h"
#include "host/call.h"
#include "host/mousekeys.h"
#include "platform/input.h"

namespace tarvoke::host {
namespace {

using engine::Answer;
using engine::Param;

#define TARVOKE_HANDLER_ENTRY(id, name, number, effect, handler, params) &handlers::handler,
constexpr std::array<Handler, engine::rows::kHost.size()> kHandlers{TARVOKE_HOST_COMMANDS(TARVOKE_HANDLER_ENTRY)};
#undef TARVOKE_HANDLER_ENTRY

// The parameter's raw text, as the load left it.
const std::string& rawText(const engine::SC& engine, int32_t line, int k) {
    static const std::string kNone;
    if (line < 1 || line > engine.statementCount()) return kNone;
    return engine.statement(line).parameters[k];
}

// False when the parameter does not convert.
bool decode(Session& session, const engine::SC& engine, int32_t line, int k, Param param, Value& value) {
    const std::string& raw = rawText(engine, line, k);
    if (param == Param::Test || param == Param::Measure) return true;  // the engine reads the name itself
    if (param == Param::OptionalText) {
        value.present = !raw.empty();
        if (value.present) value.text = engine.getVariableAsString(raw);
        return true;
    }
    value.text = engine.getVariableAsString(raw);
    const std::string& text = value.text;
    std::optional<int32_t> integer;
    switch (param) {
    case Param::Coordinate: integer = resolveCoordinate(session, text); break;
    case Param::Byte: integer = engine::textToByte(text); break;
    case Param::Int16: integer = engine::textToInt16(text); break;
    case Param::Int32: integer = engine::textToInt32(text); break;
    case Param::Number: value.number = engine::textToDouble(text).value_or(0.0); return true;
    case Param::Image: value.slot = imageSlot(text); return true;
    case Param::Range: value.slot = rangeSlot(text); return true;
    default: return true;
    }
    if (!integer) return false;
    value.integer = *integer;
    return true;
}

}  // namespace

std::optional<int16_t> rangeSlot(std::string_view name) {
    if (name.size() < 11) return std::nullopt;
    const char c = name[10];
    if (c < '0' || c > '9') return std::nullopt;
    return static_cast<int16_t>(c - '0');
}

void HostCommands::yield() { m_session.platform.clock->yield(); }

void HostCommands::showMessage(uint32_t flags, const std::string& title, const std::string& text) {
    m_session.platform.messages->show(flags, title, text);
}

engine::LastPoint HostCommands::lastPoint() {
    m_session.settleLastClick();
    return {m_session.lastX, m_session.lastY};
}

Answer HostCommands::runCommand(engine::SC& engine, const engine::HostRow& row, int32_t line) {
    if (row.effect != engine::Effect::Input) m_session.platform.input->flush();
    if (row.effect == engine::Effect::Finds) m_session.settleLastClick();
    std::array<Value, 8> values;
    for (int k = 0; k < row.shape.count; ++k) {
        if (decode(m_session, engine, line, k, row.shape.params[k], values[k])) continue;
        if (row.shape.params[0] == Param::Test) return Answer::test(true);
        if (row.shape.params[0] == Param::Measure) return Answer::measure(std::nullopt);
        return Answer::none();
    }
    Call call{m_session, engine, values};
    return kHandlers[static_cast<size_t>(&row - engine::rows::kHost.data())](call);
}

namespace handlers {

Answer msgBox(Call& call) {
    // Flags 0 (OK, no icon) and the program's title, which start-up empties.
    call.session.platform.messages->show(0, "", call.text(0));
    return {};
}

Answer enableRepeat(Call& call) {
    call.session.repeat = true;
    return {};
}

Answer disableRepeat(Call& call) {
    call.session.repeat = false;
    return {};
}

Answer firstFindMode(Call& call) {
    call.session.firstFind = true;
    return {};
}

Answer randomFindMode(Call& call) {
    call.session.firstFind = false;
    return {};
}

Answer nothing(Call&) { return {}; }

}  // namespace handlers
}  // namespace tarvoke::host
