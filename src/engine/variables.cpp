// Variables and conditions. Three tables, one per type, searched in the
// order text, long, double; a name that no variable bears is a text.

#include <cmath>

#include "engine/numeric.h"
#include "engine/sc.h"
#include "engine/scripttext.h"
#include "host/session.h"

namespace tarvoke::engine {
namespace {

enum class Operator { Less, LessOrEqual, Greater, GreaterOrEqual, Equal, NotEqual };

struct FoundOperator {
    size_t position = std::string::npos;
    size_t length = 0;
    Operator op = Operator::Equal;
};

// The first operator from the left; at each position the two-character
// operators are tested before the one-character ones. Quotes do not matter.
FoundOperator findOperator(const std::string& text) {
    for (size_t i = 0; i < text.size(); ++i) {
        if (i + 1 < text.size()) {
            const char a = text[i], b = text[i + 1];
            if (a == '<' && b == '=') return {i, 2, Operator::LessOrEqual};
            if (a == '>' && b == '=') return {i, 2, Operator::GreaterOrEqual};
            if ((a == '<' && b == '>') || (a == '!' && b == '=')) return {i, 2, Operator::NotEqual};
        }
        if (text[i] == '<') return {i, 1, Operator::Less};
        if (text[i] == '>') return {i, 1, Operator::Greater};
        if (text[i] == '=') return {i, 1, Operator::Equal};
    }
    return {};
}

template <typename T>
bool compare(Operator op, const T& a, const T& b) {
    switch (op) {
    case Operator::Less: return a < b;
    case Operator::LessOrEqual: return a <= b;
    case Operator::Greater: return a > b;
    case Operator::GreaterOrEqual: return a >= b;
    case Operator::Equal: return a == b;
    case Operator::NotEqual: return a != b;
    }
    return false;
}

struct Operand {
    int32_t type = kText;
    std::string text;
    int32_t lng = 0;
    double dbl = 0;

    std::string asText() const {
        if (type == kLong) return std::to_string(lng);
        if (type == kDouble) return doubleToText(dbl);
        return text;
    }
    double asDouble() const { return type == kLong ? lng : dbl; }
};

Operand takeOperand(const ValueSlot& slot) {
    Operand operand{slot.lngValueType, {}, slot.lngValue, slot.dblValue};
    if (slot.lngValueType == kText) operand.text = slot.sValue;
    return operand;
}

void removeAll(std::string& text, const std::string& what) {
    if (what.empty()) return;
    std::string out;
    size_t start = 0;
    for (size_t hit; (hit = text.find(what, start)) != std::string::npos; start = hit + what.size())
        out.append(text, start, hit - start);
    out.append(text, start, std::string::npos);
    text = std::move(out);
}

std::string slotText(const ValueSlot& slot) {
    if (slot.lngValueType == kLong) return std::to_string(slot.lngValue);
    if (slot.lngValueType == kDouble) return doubleToText(slot.dblValue);
    return slot.sValue;
}

}  // namespace

bool SC::readLastPosition(const std::string& name, int32_t& value) const {
    if (name.size() != 2 || name[0] != 'l') return false;
    if (name[1] == 'x' || name[1] == 'y') m_session.settleLastClick();
    if (name[1] == 'x') value = m_session.intLastX;
    else if (name[1] == 'y') value = m_session.intLastY;
    else return false;
    return true;
}

SC::NameSlots SC::slotsOf(const std::string& name) const {
    const auto found = m_names.find(name);
    return found == m_names.end() ? NameSlots{} : found->second;
}

void SC::GetVariable(std::string& sVariableName) { resolve(sVariableName); }

// Fills the value slot from a parameter; false where the step fails (a
// number beyond 32 bits, a lone double quote). A quoted text loses its
// quotes in the caller's string, so the statement itself changes.
bool SC::resolve(std::string& name) {
    int32_t position = 0;
    if (readLastPosition(name, position)) {
        m_value.lngValueType = kLong;
        m_value.lngValue = position;
        return true;
    }
    const NameSlots slots = slotsOf(name);
    if (slots.text >= 0) {
        m_value.lngValueType = kText;
        m_value.sValue = m_stringVariables[slots.text].value;
        return true;
    }
    if (slots.lng >= 0) {
        m_value.lngValueType = kLong;
        m_value.lngValue = m_longVariables[slots.lng].value;
        return true;
    }
    if (slots.dbl >= 0) {
        m_value.lngValueType = kDouble;
        m_value.dblValue = m_doubleVariables[slots.dbl].value;
        return true;
    }
    if (isNumericText(name)) {
        if (isDoubleText(name)) {
            m_value.lngValueType = kDouble;
            m_value.dblValue = readNumericPrefix(name);
            return true;
        }
        m_value.lngValueType = kLong;  // the long keeps its old value when the text does not fit
        const auto value = textToLong(name);
        if (!value) return false;
        m_value.lngValue = *value;
        return true;
    }
    m_value.lngValueType = kText;
    if (!name.empty() && name[0] == '"') {
        if (name.size() < 2) {
            m_value.sValue.clear();
            return false;
        }
        name = name.substr(1, name.size() - 2);
    }
    if (IsHexText(name)) {
        std::string digits = name.substr(2);
        m_value.sValue = HextoAsciiNS(digits);
    } else {
        m_value.sValue = name;
    }
    return true;
}

std::string SC::GetVariableAsString(const std::string& sVariableName) const {
    const std::string& name = sVariableName;
    if (!name.empty() && name[0] == '"') return name.size() < 2 ? std::string() : name.substr(1, name.size() - 2);
    int32_t position = 0;
    if (readLastPosition(name, position)) return std::to_string(position);
    if (!name.empty() && name[0] == '$') return name.substr(1);
    const NameSlots slots = slotsOf(name);
    if (slots.text >= 0) return m_stringVariables[slots.text].value;
    if (slots.lng >= 0) return std::to_string(m_longVariables[slots.lng].value);
    if (slots.dbl >= 0) return doubleToText(m_doubleVariables[slots.dbl].value);
    return name;
}

bool SC::IsExistingVariable(const std::string& sVariableName) const {
    const NameSlots slots = slotsOf(sVariableName);
    return slots.text >= 0 || slots.lng >= 0 || slots.dbl >= 0;
}

int32_t SC::appendVariable(const std::string& name, int32_t type) {
    NameSlots& slots = m_names[name];
    if (type == kText) {
        slots.text = static_cast<int32_t>(m_stringVariables.size());
        m_stringVariables.push_back({name, {}});
        return slots.text;
    }
    if (type == kLong) {
        slots.lng = static_cast<int32_t>(m_longVariables.size());
        m_longVariables.push_back({name, 0});
        return slots.lng;
    }
    slots.dbl = static_cast<int32_t>(m_doubleVariables.size());
    m_doubleVariables.push_back({name, 0.0});
    return slots.dbl;
}

void SC::AddSetVariable(const std::string& sVariableName, int32_t sVariableType, int32_t FUNCTION_ID) {
    if (sVariableType != kText && sVariableType != kLong && sVariableType != kDouble) return;
    const NameSlots slots = slotsOf(sVariableName);
    int32_t index = sVariableType == kText ? slots.text : sVariableType == kLong ? slots.lng : slots.dbl;
    int32_t operation = FUNCTION_ID;
    if (index < 0) {
        // A new variable takes the value as a set would, whatever the command.
        index = appendVariable(sVariableName, sVariableType);
        operation = 11;
    }
    if (sVariableType == kText) applyToText(m_stringVariables[index].value, operation);
    else if (sVariableType == kLong) applyToLong(m_longVariables[index].value, operation);
    else applyToDouble(m_doubleVariables[index].value, operation);
}

void SC::applyToText(std::string& value, int32_t FUNCTION_ID) {
    const bool textOperand = m_value.lngValueType == kText;
    // A text that would outgrow the longest text the language holds is a
    // failed step: the variable stays as it was.
    auto fits = [this](size_t size) { return size <= m_maxTextBytes; };
    switch (FUNCTION_ID) {
    case 11: value = slotText(m_value); break;
    case 12: {
        const std::string operand = slotText(m_value);
        if (fits(value.size() + operand.size())) value += operand;
        break;
    }
    case 13:
    case 14: removeAll(value, slotText(m_value)); break;
    case 15: {
        if (textOperand) {
            if (fits(value.size() + m_value.sValue.size())) value += m_value.sValue;
            break;
        }
        const auto times = m_value.lngValueType == kLong ? roundToInt16(m_value.lngValue) : roundToInt16(m_value.dblValue);
        if (!times) return;
        if (*times > 0 && !fits(value.size() * static_cast<size_t>(*times))) return;
        std::string repeated;
        for (int16_t i = 0; i < *times; ++i) repeated += value;
        value = std::move(repeated);
        break;
    }
    default: break;  // power has no meaning on text
    }
}

void SC::applyToLong(int32_t& value, int32_t FUNCTION_ID) {
    const int32_t type = m_value.lngValueType;
    if (FUNCTION_ID == 16 && type == kText) return;
    const std::optional<int32_t> operand = type == kLong     ? std::optional<int32_t>(m_value.lngValue)
                                           : type == kDouble ? doubleToLong(m_value.dblValue)
                                                             : textToLong(m_value.sValue);
    if (!operand) return;
    const int64_t a = value, b = *operand;
    std::optional<int32_t> result;
    switch (FUNCTION_ID) {
    case 11: result = *operand; break;
    case 12: result = roundToInt32(static_cast<double>(a + b)); break;
    case 13: result = roundToInt32(static_cast<double>(a - b)); break;
    case 14: if (b != 0) result = roundToInt32(static_cast<double>(a) / static_cast<double>(b)); break;
    case 15: result = roundToInt32(static_cast<double>(a * b)); break;
    case 16: result = roundToInt32(std::pow(static_cast<double>(a), static_cast<double>(b))); break;
    default: break;
    }
    if (result) value = *result;  // a failed operation leaves the variable as it was
}

void SC::applyToDouble(double& value, int32_t FUNCTION_ID) {
    const int32_t type = m_value.lngValueType;
    if (FUNCTION_ID == 16 && type == kText) return;
    const double operand = type == kDouble ? m_value.dblValue : type == kLong ? m_value.lngValue : readNumericPrefix(m_value.sValue);
    // Arithmetic stores its float result even where it overflows or divides
    // by zero; an undefined power leaves the variable alone.
    switch (FUNCTION_ID) {
    case 11: value = operand; break;
    case 12: value += operand; break;
    case 13: value -= operand; break;
    case 14: value /= operand; break;
    case 15: value *= operand; break;
    case 16: {
        const double power = std::pow(value, operand);
        if (std::isfinite(power)) value = power;
        break;
    }
    default: break;
    }
}

bool SC::Evaluate(const std::string& inputParameters) {
    const FoundOperator found = findOperator(inputParameters);
    if (found.position == std::string::npos) return false;
    std::string left = inputParameters.substr(0, found.position);
    std::string right = inputParameters.substr(found.position + found.length);
    // A side that cannot be read (a number beyond 32 bits, a lone quote)
    // makes the condition false.
    if (!resolve(left)) return false;
    const Operand a = takeOperand(m_value);
    if (!resolve(right)) return false;
    const Operand b = takeOperand(m_value);

    if (a.type == kText || b.type == kText) return compare(found.op, a.asText(), b.asText());
    if (a.type == kLong && b.type == kLong) return compare(found.op, a.lng, b.lng);
    return compare(found.op, a.asDouble(), b.asDouble());
}

}  // namespace tarvoke::engine
