#pragma once
// How scripts name image slots and colour ranges.

#include <cstdint>
#include <optional>
#include <string_view>

namespace tarvoke::screen {

// "imagesave7", "7" and "imagesave7.5" (slot 8) all name a slot: every
// "imagesave" is removed (case-sensitive) and the rest must be a number that
// fits 16 bits. The result may lie outside the store; that is the caller's
// concern, as a capture or load there is still made and then dropped.
std::optional<int16_t> imageIndex(std::string_view name);

// Only the 11th byte of a range name counts, read as one digit: "colorrange3"
// is range 3 and "colorrange12" is range 1. Empty when it is missing or no digit.
std::optional<int> rangeIndex(std::string_view name);

}  // namespace tarvoke::screen
