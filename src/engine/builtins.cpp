// The built-in commands 8 to 24: declarations, arithmetic, text operations
// and the message dialog. A step that fails has no effect and the next step
// of the command still runs; nothing is reported.

#include <cmath>

#include "engine/commands.h"
#include "engine/numeric.h"
#include "engine/sc.h"
#include "engine/scripttext.h"
#include "host/session.h"

namespace tarvoke::engine {
namespace {

// The float factorial of the value rounded to 16 bits; empty on failure.
std::optional<double> Factorial(double value) {
    const auto n = roundToInt16(value);
    if (!n) return std::nullopt;
    double result = 1;
    for (int32_t i = 1; i <= *n; ++i) result *= i;
    if (!std::isfinite(result)) return std::nullopt;
    return result;
}

std::optional<double> functionOf(int32_t functionID, double x) {
    switch (static_cast<Command>(functionID)) {
    case Command::Tan: return std::tan(x);
    case Command::Cos: return std::cos(x);
    case Command::Sin: return std::sin(x);
    case Command::Log:
        if (x <= 0) return std::nullopt;
        return std::log(x);
    case Command::Factorial: return Factorial(x);
    default: return std::nullopt;
    }
}

// The flags of a message style; empty for a style that shows nothing.
std::optional<uint32_t> messageFlags(const std::string& style) {
    static const std::pair<const char*, uint32_t> kStyles[] = {
        {"normal", 0},          {"app", 0},           {"critical", 16},    {"question", 32},
        {"exclamation", 48},    {"information", 64},  {"systemmodal", 4096}, {"right", 524288},
        {"reading", 1048576},   {"silly", 1048576},
    };
    const std::string lower = lowerAscii(style);
    for (const auto& [name, flags] : kStyles)
        if (lower == name) return flags;
    return std::nullopt;
}

// The 1-based cut of parse; empty when start or length is no number or
// start is below 1.
std::optional<std::string> cut(const std::string& text, const std::string& startText, const std::string& lengthText) {
    const auto start = TextToInt32(startText);
    const auto length = TextToInt32(lengthText);
    if (!start || !length || *start < 1 || *length < 0) return std::nullopt;
    if (static_cast<size_t>(*start) > text.size()) return std::string();
    return text.substr(static_cast<size_t>(*start) - 1, static_cast<size_t>(*length));
}

}  // namespace

void SC::ExecuteBuiltin() {
    Statement& statement = m_statements[m_lngCurrentLine];
    auto& p = statement.sParameter;
    const int32_t id = statement.functionID;
    switch (static_cast<Command>(id)) {
    case Command::String:
    case Command::Int:
    case Command::Double:
        GetVariable(p[1]);
        AddSetVariable(p[0], id, 11);
        return;
    case Command::Set: {
        const std::string text = GetVariableAsString(p[1]);
        GetVariable(p[1]);
        const int32_t type = !isNumericText(text) ? kText : isDoubleText(text) ? kDouble : kLong;
        AddSetVariable(p[0], type, 11);
        return;
    }
    case Command::Add:
    case Command::Subtract:
    case Command::Divide:
    case Command::Multiply:
    case Command::Power: {
        GetVariable(p[0]);
        const int32_t targetType = m_value.lngValueType;
        if (id == static_cast<int32_t>(Command::Power) && targetType == kText) return;
        GetVariable(p[1]);
        AddSetVariable(p[0], targetType, id);
        return;
    }
    case Command::Tan:
    case Command::Cos:
    case Command::Sin:
    case Command::Log:
    case Command::Factorial:
        runFunctionOfVariable(id);
        return;
    case Command::Parse:
    case Command::Replace:
        runTextCommand(id);
        return;
    case Command::Message:
        runMessage();
        return;
    default:
        ExecuteExternalFunction(id, m_lngCurrentLine);
        return;
    }
}

void SC::runFunctionOfVariable(int32_t functionID) {
    std::string& name = m_statements[m_lngCurrentLine].sParameter[0];
    GetVariable(name);
    const int32_t type = m_value.lngValueType;
    if (type == kText) return;
    // A failed computation leaves the slot as it was, and the set below
    // writes the old value back.
    const double x = type == kLong ? m_value.lngValue : m_value.dblValue;
    if (const auto y = functionOf(functionID, x)) {
        if (type == kDouble) {
            m_value.dblValue = *y;
        } else if (const auto rounded = roundToInt32(*y)) {
            m_value.lngValue = *rounded;
        }
    }
    AddSetVariable(name, type, 11);
}

void SC::runTextCommand(int32_t functionID) {
    auto& p = m_statements[m_lngCurrentLine].sParameter;
    GetVariable(p[0]);
    if (m_value.lngValueType != kText) return;
    // For a text variable the value in hand is its text, so a long text is
    // not copied again; any other name is taken as it stands.
    if (slotsOf(p[0]).text < 0) m_value.sValue = GetVariableAsString(p[0]);
    const std::string second = GetVariableAsString(p[1]);
    const std::string third = GetVariableAsString(p[2]);
    if (functionID == static_cast<int32_t>(Command::Parse)) {
        if (auto piece = cut(m_value.sValue, second, third)) m_value.sValue = std::move(*piece);
    } else {
        if (auto replaced = replaceText(m_value.sValue, second, third)) m_value.sValue = std::move(*replaced);
    }
    AddSetVariable(p[0], kText, 11);
}

void SC::runMessage() {
    const auto& p = m_statements[m_lngCurrentLine].sParameter;
    const std::string text = GetVariableAsString(p[0]);
    const std::string style = GetVariableAsString(p[1]);
    const std::string title = GetVariableAsString(p[2]);
    // Nothing of the statement is touched after the box: a handler may reload.
    if (const auto flags = messageFlags(style)) m_session.platform.messages->show(*flags, title, text);
}

}  // namespace tarvoke::engine
