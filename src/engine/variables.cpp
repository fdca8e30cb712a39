// Variables and conditions. Three tables, one per type, searched in the
// order text, long, double; a name that no variable bears is a text.

#include <cmath>

#include "engine/numeric.h"
#include "engine/sc.h"
#include "engine/scripttext.h"
#include "host/session.h"

namespace tarvoke::engine {
namespace {

constexpr size_t kTextPiece = size_t{4} << 20;

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

// Takes the text out of the slot rather than copying it: a side of a
// condition may be a text of hundreds of megabytes. (The slot's text is read
// only while its tag says text, so nothing sees it go.)
Operand takeOperand(ValueSlot& slot) {
    Operand operand{slot.lngValueType, {}, slot.lngValue, slot.dblValue};
    if (slot.lngValueType == kText) operand.text = std::move(slot.sValue);
    return operand;
}

std::string slotText(const ValueSlot& slot) {
    if (slot.lngValueType == kLong) return std::to_string(slot.lngValue);
    if (slot.lngValueType == kDouble) return doubleToText(slot.dblValue);
    return slot.sValue;
}

}  // namespace

bool SC::stopPending() {
    if (!m_stepStopped && m_session.stopPending()) m_stepStopped = true;
    return m_stepStopped;
}

// A text beyond a few megabytes takes long to copy (a fresh page of memory
// is slow), so long texts are copied in pieces with a look at the stop
// between them. On a stop the copy is left unfinished and the step changes
// nothing.
bool SC::appendText(std::string& to, std::string_view piece) {
    for (size_t done = 0; done < piece.size(); done += kTextPiece) {
        if (piece.size() > kTextPiece && stopPending()) return false;
        to.append(piece.substr(done, kTextPiece));
    }
    return true;
}

bool SC::copyText(std::string& to, const std::string& from) {
    if (&to == &from) return true;
    if (from.size() <= kTextPiece) {
        to = from;
        return true;
    }
    to.clear();
    to.reserve(from.size());
    return appendText(to, from);
}

bool SC::fitsTexts(size_t newSize) const {
    // The value in hand counts by what it holds on to, which a short value
    // after a long one does not give back.
    const size_t held = m_textBytes + m_value.sValue.capacity();
    return newSize <= m_maxTextBytes && newSize <= m_maxTextMemory && held <= m_maxTextMemory - newSize;
}

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
        if (!copyText(m_value.sValue, m_stringVariables[slots.text].value)) m_value.sValue.clear();
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
    if (m_stepStopped) return;
    const NameSlots slots = slotsOf(sVariableName);
    int32_t index = sVariableType == kText ? slots.text : sVariableType == kLong ? slots.lng : slots.dbl;
    int32_t operation = FUNCTION_ID;
    if (index < 0) {
        // A new variable takes the value as a set would, whatever the command.
        index = appendVariable(sVariableName, sVariableType);
        operation = 11;
    }
    if (sVariableType == kText) {
        std::string& value = m_stringVariables[index].value;
        const size_t before = value.size();
        applyToText(value, operation);
        m_textBytes = m_textBytes - before + value.size();
    }
    else if (sVariableType == kLong) applyToLong(m_longVariables[index].value, operation);
    else applyToDouble(m_doubleVariables[index].value, operation);
}

// A text that would outgrow the longest text the language holds, or the
// memory all texts may hold together, is a failed step: the variable stays
// as it was. So does a step that a stop cut short.
void SC::applyToText(std::string& value, int32_t FUNCTION_ID) {
    const bool textOperand = m_value.lngValueType == kText;
    const std::string number = textOperand ? std::string() : slotText(m_value);
    const std::string& operand = textOperand ? m_value.sValue : number;
    // value followed by count times piece, built aside so that a failure
    // leaves value untouched.
    const auto build = [&](std::string_view head, std::string_view piece, size_t count) {
        if (head.size() > m_maxTextMemory || (count > 0 && piece.size() > (m_maxTextMemory - head.size()) / count))
            return;
        const size_t size = head.size() + piece.size() * count;
        if (!fitsTexts(size)) return;
        std::string result;
        result.reserve(size);
        if (!appendText(result, head)) return;
        for (size_t i = 0; i < count; ++i)
            if (!appendText(result, piece)) return;
        value = std::move(result);
    };
    switch (FUNCTION_ID) {
    case 11: build({}, operand, 1); break;
    case 12: build(value, operand, 1); break;
    case 13:
    case 14:
        if (auto removed = replaceText(value, operand, {})) value = std::move(*removed);
        break;
    case 15: {
        if (textOperand) {
            build(value, operand, 1);
            break;
        }
        const auto times = m_value.lngValueType == kLong ? roundToInt16(m_value.lngValue) : roundToInt16(m_value.dblValue);
        if (!times) return;
        if (*times > 1) build({}, value, static_cast<size_t>(*times));
        else if (*times == 1) break;
        else value.clear();
        break;
    }
    default: break;  // power has no meaning on text
    }
}

// Every find replaced by with, or nothing when the result would not fit or
// a stop came.
std::optional<std::string> SC::replaceText(const std::string& text, const std::string& find, const std::string& with) {
    if (find.empty()) return text;
    size_t size = text.size();
    if (with.size() != find.size()) {
        size_t hits = 0, checked = 0;
        for (size_t hit = 0; (hit = text.find(find, hit)) != std::string::npos; hit += find.size()) {
            ++hits;
            if (hit - checked > kTextPiece) {
                if (stopPending()) return std::nullopt;
                checked = hit;
            }
        }
        size = text.size() - hits * find.size() + hits * with.size();
        if (with.size() > find.size() && (text.size() > m_maxTextMemory ||
                                          hits > (m_maxTextMemory - text.size()) / (with.size() - find.size())))
            return std::nullopt;
    }
    if (!fitsTexts(size)) return std::nullopt;
    std::string out;
    out.reserve(size);
    size_t start = 0, checked = 0;
    for (size_t hit; (hit = text.find(find, start)) != std::string::npos; start = hit + find.size()) {
        out.append(text, start, hit - start).append(with);
        if (out.size() - checked > kTextPiece) {
            if (stopPending()) return std::nullopt;
            checked = out.size();
        }
    }
    out.append(text, start, std::string::npos);
    return out;
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
    Operand b = takeOperand(m_value);

    bool result = false;
    if (a.type == kText && b.type == kText) result = compare(found.op, a.text, b.text);
    else if (a.type == kText || b.type == kText) result = compare(found.op, a.asText(), b.asText());
    else if (a.type == kLong && b.type == kLong) result = compare(found.op, a.lng, b.lng);
    else result = compare(found.op, a.asDouble(), b.asDouble());
    // The value in hand keeps the right side's text, as a look-up leaves it.
    if (b.type == kText) m_value.sValue = std::move(b.text);
    return result;
}

}  // namespace tarvoke::engine
