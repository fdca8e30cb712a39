// Variables and conditions. Three tables, one per type, searched in the
// order text, long, double; a name that no variable bears is a text.

#include <cmath>

#include "engine/numeric.h"
#include "engine/sc.h"
#include "engine/scripttext.h"

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
    ValueKind type = ValueKind::Text;
    std::string text;
    int32_t lng = 0;
    double dbl = 0;

    std::string asText() const {
        if (type == ValueKind::Long) return std::to_string(lng);
        if (type == ValueKind::Double) return doubleToText(dbl);
        return text;
    }
    double asDouble() const { return type == ValueKind::Long ? lng : dbl; }
};

// Takes the text out of the slot rather than copying it: a side of a
// condition may be a text of hundreds of megabytes. (The slot's text is read
// only while its tag says text, so nothing sees it go.)
Operand takeOperand(ValueSlot& slot) {
    Operand operand{slot.kind, {}, slot.integer, slot.real};
    if (slot.kind == ValueKind::Text) operand.text = std::move(slot.text);
    return operand;
}

std::string slotText(const ValueSlot& slot) {
    if (slot.kind == ValueKind::Long) return std::to_string(slot.integer);
    if (slot.kind == ValueKind::Double) return doubleToText(slot.real);
    return slot.text;
}

}  // namespace

bool SC::stopPending() {
    if (!m_stepStopped && m_environment.stopPending()) m_stepStopped = true;
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
    const size_t held = m_textBytes + m_value.text.capacity();
    return newSize <= m_maxTextBytes && newSize <= m_maxTextMemory && held <= m_maxTextMemory - newSize;
}

bool SC::readLastPosition(const std::string& name, int32_t& value) const {
    if (name.size() != 2 || name[0] != 'l' || (name[1] != 'x' && name[1] != 'y')) return false;
    const LastPoint last = m_environment.lastPoint();
    value = name[1] == 'x' ? last.x : last.y;
    return true;
}

SC::NameSlots SC::slotsOf(const std::string& name) const {
    const auto found = m_names.find(name);
    return found == m_names.end() ? NameSlots{} : found->second;
}

void SC::getVariable(std::string& name) { resolve(name); }

// Fills the value slot from a parameter; false where the step fails (a
// number beyond 32 bits, a lone double quote). A quoted text loses its
// quotes in the caller's string, so the statement itself changes.
bool SC::resolve(std::string& name) {
    int32_t position = 0;
    if (readLastPosition(name, position)) {
        m_value.kind = ValueKind::Long;
        m_value.integer = position;
        return true;
    }
    const NameSlots slots = slotsOf(name);
    if (slots.text >= 0) {
        m_value.kind = ValueKind::Text;
        if (!copyText(m_value.text, m_stringVariables[slots.text].value)) m_value.text.clear();
        return true;
    }
    if (slots.lng >= 0) {
        m_value.kind = ValueKind::Long;
        m_value.integer = m_longVariables[slots.lng].value;
        return true;
    }
    if (slots.dbl >= 0) {
        m_value.kind = ValueKind::Double;
        m_value.real = m_doubleVariables[slots.dbl].value;
        return true;
    }
    if (isNumericText(name)) {
        if (isDoubleText(name)) {
            m_value.kind = ValueKind::Double;
            m_value.real = readNumericPrefix(name);
            return true;
        }
        m_value.kind = ValueKind::Long;  // the long keeps its old value when the text does not fit
        const auto value = textToLong(name);
        if (!value) return false;
        m_value.integer = *value;
        return true;
    }
    m_value.kind = ValueKind::Text;
    if (!name.empty() && name[0] == '"') {
        if (name.size() < 2) {
            m_value.text.clear();
            return false;
        }
        name = name.substr(1, name.size() - 2);
    }
    if (isHexText(name)) {
        std::string digits = name.substr(2);
        m_value.text = hexToAscii(digits);
    } else {
        m_value.text = name;
    }
    return true;
}

std::string SC::getVariableAsString(const std::string& name) const {
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

bool SC::isExistingVariable(const std::string& name) const {
    const NameSlots slots = slotsOf(name);
    return slots.text >= 0 || slots.lng >= 0 || slots.dbl >= 0;
}

int32_t SC::appendVariable(const std::string& name, ValueKind type) {
    NameSlots& slots = m_names[name];
    if (type == ValueKind::Text) {
        slots.text = static_cast<int32_t>(m_stringVariables.size());
        m_stringVariables.push_back({name, {}});
        return slots.text;
    }
    if (type == ValueKind::Long) {
        slots.lng = static_cast<int32_t>(m_longVariables.size());
        m_longVariables.push_back({name, 0});
        return slots.lng;
    }
    slots.dbl = static_cast<int32_t>(m_doubleVariables.size());
    m_doubleVariables.push_back({name, 0.0});
    return slots.dbl;
}

void SC::addSetVariable(const std::string& name, ValueKind kind, Operation operation) {
    if (kind != ValueKind::Text && kind != ValueKind::Long && kind != ValueKind::Double) return;
    if (m_stepStopped) return;
    const NameSlots slots = slotsOf(name);
    int32_t index = kind == ValueKind::Text ? slots.text : kind == ValueKind::Long ? slots.lng : slots.dbl;
    if (index < 0) {
        // A new variable takes the value as a set would, whatever the command.
        index = appendVariable(name, kind);
        operation = Operation::Set;
    }
    if (kind == ValueKind::Text) {
        std::string& value = m_stringVariables[index].value;
        const size_t before = value.size();
        applyToText(value, operation);
        m_textBytes = m_textBytes - before + value.size();
    }
    else if (kind == ValueKind::Long) applyToLong(m_longVariables[index].value, operation);
    else applyToDouble(m_doubleVariables[index].value, operation);
}

// A text that would outgrow the longest text the language holds, or the
// memory all texts may hold together, is a failed step: the variable stays
// as it was. So does a step that a stop cut short.
void SC::applyToText(std::string& value, Operation operation) {
    const bool textOperand = m_value.kind == ValueKind::Text;
    const std::string number = textOperand ? std::string() : slotText(m_value);
    const std::string& operand = textOperand ? m_value.text : number;
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
    switch (operation) {
    case Operation::Set: build({}, operand, 1); break;
    case Operation::Add: build(value, operand, 1); break;
    case Operation::Subtract:
    case Operation::Divide:
        if (auto removed = replaceText(value, operand, {})) value = std::move(*removed);
        break;
    case Operation::Multiply: {
        if (textOperand) {
            build(value, operand, 1);
            break;
        }
        const auto times = m_value.kind == ValueKind::Long ? roundToInt16(m_value.integer) : roundToInt16(m_value.real);
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

void SC::applyToLong(int32_t& value, Operation operation) {
    const ValueKind type = m_value.kind;
    if (operation == Operation::Power && type == ValueKind::Text) return;
    const std::optional<int32_t> operand = type == ValueKind::Long     ? std::optional<int32_t>(m_value.integer)
                                           : type == ValueKind::Double ? doubleToLong(m_value.real)
                                                             : textToLong(m_value.text);
    if (!operand) return;
    const int64_t a = value, b = *operand;
    std::optional<int32_t> result;
    switch (operation) {
    case Operation::Set: result = *operand; break;
    case Operation::Add: result = roundToInt32(static_cast<double>(a + b)); break;
    case Operation::Subtract: result = roundToInt32(static_cast<double>(a - b)); break;
    case Operation::Divide: if (b != 0) result = roundToInt32(static_cast<double>(a) / static_cast<double>(b)); break;
    case Operation::Multiply: result = roundToInt32(static_cast<double>(a * b)); break;
    case Operation::Power: result = roundToInt32(std::pow(static_cast<double>(a), static_cast<double>(b))); break;
    default: break;
    }
    if (result) value = *result;  // a failed operation leaves the variable as it was
}

void SC::applyToDouble(double& value, Operation operation) {
    const ValueKind type = m_value.kind;
    if (operation == Operation::Power && type == ValueKind::Text) return;
    const double operand = type == ValueKind::Double ? m_value.real
                           : type == ValueKind::Long ? m_value.integer
                                                     : readNumericPrefix(m_value.text);
    // Arithmetic stores its float result even where it overflows or divides
    // by zero; an undefined power leaves the variable alone.
    switch (operation) {
    case Operation::Set: value = operand; break;
    case Operation::Add: value += operand; break;
    case Operation::Subtract: value -= operand; break;
    case Operation::Divide: value /= operand; break;
    case Operation::Multiply: value *= operand; break;
    case Operation::Power: {
        const double power = std::pow(value, operand);
        if (std::isfinite(power)) value = power;
        break;
    }
    default: break;
    }
}

bool SC::evaluate(const std::string& condition) {
    const FoundOperator found = findOperator(condition);
    if (found.position == std::string::npos) return false;
    std::string left = condition.substr(0, found.position);
    std::string right = condition.substr(found.position + found.length);
    // A side that cannot be read (a number beyond 32 bits, a lone quote)
    // makes the condition false.
    if (!resolve(left)) return false;
    const Operand a = takeOperand(m_value);
    if (!resolve(right)) return false;
    Operand b = takeOperand(m_value);

    bool result = false;
    if (a.type == ValueKind::Text && b.type == ValueKind::Text) result = compare(found.op, a.text, b.text);
    else if (a.type == ValueKind::Text || b.type == ValueKind::Text) result = compare(found.op, a.asText(), b.asText());
    else if (a.type == ValueKind::Long && b.type == ValueKind::Long) result = compare(found.op, a.lng, b.lng);
    else result = compare(found.op, a.asDouble(), b.asDouble());
    // The value in hand keeps the right side's text, as a look-up leaves it.
    if (b.type == ValueKind::Text) m_value.text = std::move(b.text);
    return result;
}

}  // namespace tarvoke::engine
