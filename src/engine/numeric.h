#pragma once
// Number rules of the script language, shared by the engine and the host
// commands. Texts are byte strings; only ASCII counts as digits and blanks.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarvoke::engine {

// True when the whole text reads as one number: optional sign, decimal digits
// with at most one ".", an optional exponent, or an "&h" hexadecimal form.
// Blanks around the number are allowed; the empty text is not numeric.
bool isNumericText(std::string_view text);

// A numeric text is a double exactly when it contains a ".".
inline bool isDoubleText(std::string_view text) { return text.find('.') != std::string_view::npos; }

// Numeric-prefix reading: the longest leading part that reads as a number,
// blanks skipped anywhere inside it, "&h" forms included; 0 when there is none.
double readNumericPrefix(std::string_view text);

// Float to integer, rounded to nearest with ties to even. Empty when the
// result does not fit the target or the value is not finite.
std::optional<int32_t> roundToInt32(double value);
std::optional<int16_t> roundToInt16(double value);
std::optional<uint8_t> roundToByte(double value);

// The four conversions of host command parameters: the text must be numeric
// as a whole, then it is rounded (ties to even) and range-checked.
std::optional<uint8_t> textToByte(std::string_view text);
std::optional<int16_t> textToInt16(std::string_view text);
std::optional<int32_t> textToInt32(std::string_view text);
std::optional<double> textToDouble(std::string_view text);

// Text to long by the variables' rule: numeric prefix, then rounding.
std::optional<int32_t> textToLong(std::string_view text);

// Double to text: up to 15 significant digits, no trailing zeros, plain
// decimal from 1e-5 up to below 1e15, else "1.5E+20" / "1E-07".
std::string doubleToText(double value);

// Double to long goes through its text, as the language defines it.
std::optional<int32_t> doubleToLong(double value);

// How scripts name image slots. "imagesave7", "7" and "imagesave7.5" (slot 8)
// all name a slot: every "imagesave" is removed (case-sensitive) and the
// rest must be a number that fits 16 bits. The result may lie outside the
// store; that is the store's concern.
std::optional<int16_t> imageSlot(std::string_view name);

}  // namespace tarvoke::engine
