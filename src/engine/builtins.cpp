// The built-in commands 8 to 24: declarations, arithmetic, text operations
// and the message dialog, and the answers of the host commands. A step that fails has no effect and the next step
// of the command still runs; nothing is reported.

#include <cmath>

#include "engine/commands.h"
#include "engine/numeric.h"
#include "engine/sc.h"
#include "engine/scripttext.h"

namespace tarvoke::engine {
namespace {

// The float factorial of the value rounded to 16 bits; empty on failure.
std::optional<double> factorial(double value) {
    const auto n = roundToInt16(value);
    if (!n) return std::nullopt;
    double result = 1;
    for (int32_t i = 1; i <= *n; ++i) result *= i;
    if (!std::isfinite(result)) return std::nullopt;
    return result;
}

std::optional<double> functionOf(Command command, double x) {
    switch (command) {
    case Command::Tan: return std::tan(x);
    case Command::Cos: return std::cos(x);
    case Command::Sin: return std::sin(x);
    case Command::Log:
        if (x <= 0) return std::nullopt;
        return std::log(x);
    case Command::Factorial: return factorial(x);
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
    const auto start = textToInt32(startText);
    const auto length = textToInt32(lengthText);
    if (!start || !length || *start < 1 || *length < 0) return std::nullopt;
    if (static_cast<size_t>(*start) > text.size()) return std::string();
    return text.substr(static_cast<size_t>(*start) - 1, static_cast<size_t>(*length));
}

}  // namespace

void SC::executeBuiltin() {
    auto& p = m_statements[m_currentLine].parameters;
    const auto command = static_cast<Command>(m_statements[m_currentLine].number);
    switch (command) {
    case Command::String:
    case Command::Int:
    case Command::Double:
        getVariable(p[1]);
        addSetVariable(p[0], static_cast<ValueKind>(command), Operation::Set);
        return;
    case Command::Set: {
        const std::string text = getVariableAsString(p[1]);
        getVariable(p[1]);
        const ValueKind kind = !isNumericText(text)  ? ValueKind::Text
                               : isDoubleText(text) ? ValueKind::Double
                                                    : ValueKind::Long;
        addSetVariable(p[0], kind, Operation::Set);
        return;
    }
    case Command::Add:
    case Command::Subtract:
    case Command::Divide:
    case Command::Multiply:
    case Command::Power: {
        getVariable(p[0]);
        const ValueKind targetKind = m_value.kind;
        if (command == Command::Power && targetKind == ValueKind::Text) return;
        getVariable(p[1]);
        addSetVariable(p[0], targetKind, static_cast<Operation>(command));
        return;
    }
    case Command::Tan:
    case Command::Cos:
    case Command::Sin:
    case Command::Log:
    case Command::Factorial:
        runFunctionOfVariable(command);
        return;
    case Command::Parse:
    case Command::Replace:
        runTextCommand(command);
        return;
    case Command::Message:
        runMessage();
        return;
    default:
        return;  // timer, and names in no row
    }
}

void SC::runFunctionOfVariable(Command command) {
    std::string& name = m_statements[m_currentLine].parameters[0];
    getVariable(name);
    const ValueKind kind = m_value.kind;
    if (kind == ValueKind::Text) return;
    // A failed computation leaves the slot as it was, and the set below
    // writes the old value back.
    const double x = kind == ValueKind::Long ? m_value.integer : m_value.real;
    if (const auto y = functionOf(command, x)) {
        if (kind == ValueKind::Double) {
            m_value.real = *y;
        } else if (const auto rounded = roundToInt32(*y)) {
            m_value.integer = *rounded;
        }
    }
    addSetVariable(name, kind, Operation::Set);
}

void SC::runTextCommand(Command command) {
    auto& p = m_statements[m_currentLine].parameters;
    getVariable(p[0]);
    if (m_value.kind != ValueKind::Text) return;
    // For a text variable the value in hand is its text, so a long text is
    // not copied again; any other name is taken as it stands.
    if (slotsOf(p[0]).text < 0) m_value.text = getVariableAsString(p[0]);
    const std::string second = getVariableAsString(p[1]);
    const std::string third = getVariableAsString(p[2]);
    if (command == Command::Parse) {
        if (auto piece = cut(m_value.text, second, third)) m_value.text = std::move(*piece);
    } else {
        if (auto replaced = replaceText(m_value.text, second, third)) m_value.text = std::move(*replaced);
    }
    addSetVariable(p[0], ValueKind::Text, Operation::Set);
}

void SC::runMessage() {
    const auto& p = m_statements[m_currentLine].parameters;
    const std::string text = getVariableAsString(p[0]);
    const std::string style = getVariableAsString(p[1]);
    const std::string title = getVariableAsString(p[2]);
    // Nothing of the statement is touched after the box: a handler may reload.
    if (const auto flags = messageFlags(style)) m_environment.showMessage(*flags, title, text);
}

// A host command's answer goes to the variable its first parameter names
// raw, in the form of that variable's kind: a test "True"/"False" in a text,
// 0 when it passed and 1 when it failed in a number; a measure as text, a
// long rounded (ties to even; a value that does not fit leaves it) or a
// double. A name that is no variable yet becomes a text variable. The name
// is looked up even when the measuring step failed, and the value in hand
// keeps what the look-up and the answer left in it.
void SC::storeAnswer(const Answer& answer, int32_t line) {
    if (answer.kind == Answer::Kind::None) return;
    // The command may have waited, and a reload may have come meanwhile.
    const std::string name = line >= 1 && line <= m_statementCount ? m_statements[line].parameters[0] : std::string();
    std::string copy = name;  // a look-up may strip quotes from the text it is given
    getVariable(copy);
    const ValueKind kind = m_value.kind;
    if (answer.kind == Answer::Kind::Test) {
        if (kind == ValueKind::Long) m_value.integer = answer.passed ? 0 : 1;
        else if (kind == ValueKind::Double) m_value.real = answer.passed ? 0.0 : 1.0;
        else m_value.text = answer.passed ? "True" : "False";
    } else {
        if (!answer.value) return;
        if (kind == ValueKind::Long) {
            const auto rounded = roundToInt32(*answer.value);
            if (!rounded) return;
            m_value.integer = *rounded;
        } else if (kind == ValueKind::Double) {
            m_value.real = *answer.value;
        } else {
            m_value.text = doubleToText(*answer.value);
        }
    }
    addSetVariable(name, kind, Operation::Set);
}

}  // namespace tarvoke::engine
