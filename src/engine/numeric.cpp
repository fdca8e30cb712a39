#include "engine/numeric.h"

#include <cfenv>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace tarvoke::engine {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

int hexDigit(char c) {
    if (isDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

struct Scan {
    double value = 0;
    size_t end = 0;       // one past the last character that belongs to the number
    bool found = false;   // at least one digit was read
};

// Reads "&h" followed by hexadecimal digits, as an unsigned number.
Scan scanHex(std::string_view s) {
    Scan scan;
    size_t i = 2;
    double value = 0;
    while (i < s.size() && hexDigit(s[i]) >= 0) {
        value = value * 16 + hexDigit(s[i]);
        ++i;
    }
    if (i > 2) scan = {value, i, true};
    return scan;
}

// Reads the longest number at the start of s: sign, digits, one ".", exponent.
Scan scanDecimal(std::string_view s) {
    size_t i = 0;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
    const size_t mantissaStart = i;
    size_t digits = 0;
    while (i < s.size() && isDigit(s[i])) ++i, ++digits;
    if (i < s.size() && s[i] == '.') {
        ++i;
        while (i < s.size() && isDigit(s[i])) ++i, ++digits;
    }
    if (digits == 0) return {};
    size_t end = i;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
        size_t j = i + 1;
        if (j < s.size() && (s[j] == '+' || s[j] == '-')) ++j;
        const size_t expDigitsStart = j;
        while (j < s.size() && isDigit(s[j])) ++j;
        if (j > expDigitsStart) end = j;
    }
    double magnitude = 0;
    const char* first = s.data() + mantissaStart;
    auto result = std::from_chars(first, s.data() + end, magnitude);
    if (result.ec == std::errc::result_out_of_range) {
        // from_chars leaves the value alone on overflow or underflow; decide which.
        magnitude = std::abs(std::strtod(std::string(first, s.data() + end).c_str(), nullptr));
    }
    const bool negative = s[0] == '-';
    return {negative ? -magnitude : magnitude, end, true};
}

Scan scanNumber(std::string_view s) {
    if (s.size() >= 2 && s[0] == '&' && (s[1] == 'h' || s[1] == 'H')) return scanHex(s);
    return scanDecimal(s);
}

std::string_view trimBlanks(std::string_view s) {
    while (!s.empty() && isBlank(s.front())) s.remove_prefix(1);
    while (!s.empty() && isBlank(s.back())) s.remove_suffix(1);
    return s;
}

std::optional<double> strictValue(std::string_view text) {
    const std::string_view s = trimBlanks(text);
    const Scan scan = scanNumber(s);
    if (!scan.found || scan.end != s.size()) return std::nullopt;
    return scan.value;
}

template <typename T>
std::optional<T> roundInto(double value) {
    if (!std::isfinite(value)) return std::nullopt;
    // nearbyint follows the current rounding mode, which is to-nearest-even.
    const double rounded = std::nearbyint(value);
    if (rounded < static_cast<double>(std::numeric_limits<T>::min()) ||
        rounded > static_cast<double>(std::numeric_limits<T>::max()))
        return std::nullopt;
    return static_cast<T>(rounded);
}

}  // namespace

bool isNumericText(std::string_view text) { return strictValue(text).has_value(); }

double readNumericPrefix(std::string_view text) {
    if (text.find_first_of(" \t\n\r") == std::string_view::npos) return scanNumber(text).value;
    std::string packed;
    packed.reserve(text.size());
    for (char c : text)
        if (!isBlank(c)) packed += c;
    return scanNumber(packed).value;
}

std::optional<int32_t> roundToInt32(double value) { return roundInto<int32_t>(value); }
std::optional<int16_t> roundToInt16(double value) { return roundInto<int16_t>(value); }
std::optional<uint8_t> roundToByte(double value) { return roundInto<uint8_t>(value); }

std::optional<uint8_t> textToByte(std::string_view text) {
    const auto value = strictValue(text);
    return value ? roundToByte(*value) : std::nullopt;
}

std::optional<int16_t> textToInt16(std::string_view text) {
    const auto value = strictValue(text);
    return value ? roundToInt16(*value) : std::nullopt;
}

std::optional<int32_t> textToInt32(std::string_view text) {
    const auto value = strictValue(text);
    return value ? roundToInt32(*value) : std::nullopt;
}

std::optional<double> textToDouble(std::string_view text) {
    const auto value = strictValue(text);
    if (!value || !std::isfinite(*value)) return std::nullopt;
    return value;
}

std::optional<int32_t> textToLong(std::string_view text) { return roundToInt32(readNumericPrefix(text)); }

std::string doubleToText(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    if (value == 0) return "0";

    // %.14e gives the 15 significant digits already rounded, and the exponent
    // of the rounded value, which decides the form.
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%.14e", std::abs(value));
    std::string digits;
    const char* p = buffer;
    for (; *p && *p != 'e'; ++p)
        if (isDigit(*p)) digits += *p;
    const int exponent = std::atoi(p + 1);
    while (digits.size() > 1 && digits.back() == '0') digits.pop_back();

    std::string text = value < 0 ? "-" : "";
    if (exponent >= -5 && exponent < 15) {
        if (exponent >= 0) {
            const size_t integerDigits = static_cast<size_t>(exponent) + 1;
            if (digits.size() <= integerDigits) {
                text += digits + std::string(integerDigits - digits.size(), '0');
            } else {
                text += digits.substr(0, integerDigits) + "." + digits.substr(integerDigits);
            }
        } else {
            text += "0." + std::string(static_cast<size_t>(-exponent - 1), '0') + digits;
        }
        return text;
    }
    text += digits.substr(0, 1);
    if (digits.size() > 1) text += "." + digits.substr(1);
    char exponentText[16];
    std::snprintf(exponentText, sizeof exponentText, "E%c%02d", exponent < 0 ? '-' : '+', std::abs(exponent));
    return text + exponentText;
}

std::optional<int32_t> doubleToLong(double value) {
    if (!std::isfinite(value)) return std::nullopt;
    return textToLong(doubleToText(value));
}

std::optional<int16_t> imageSlot(std::string_view name) {
    static constexpr std::string_view kPrefix = "imagesave";
    std::string rest;
    size_t start = 0;
    for (size_t hit; (hit = name.find(kPrefix, start)) != std::string_view::npos; start = hit + kPrefix.size())
        rest.append(name.substr(start, hit - start));
    rest.append(name.substr(start));
    if (!isNumericText(rest)) return std::nullopt;
    return textToInt16(rest);
}

}  // namespace tarvoke::engine
