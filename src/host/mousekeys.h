#pragma once
// Mouse and keyboard commands. Two roads: with no target window, events go
// into the input stream at the cursor; with one, the Ex button commands and
// the key commands send a message to that window and the cursor stays.

#include <cstdint>
#include <optional>
#include <string_view>

#include "host/session.h"

namespace tarvoke::host {

// The position a window message carries is the script's number divided by
// this fixed factor (twips per pixel at 96 dots per inch).
constexpr int32_t kTwipsPerPixel = 15;

// "lx", "ly" or a 16-bit number; empty when the text is none of these.
std::optional<int16_t> resolveCoordinate(Session& session, std::string_view text);

// The lParam of a button message: x and y divided by the twips per pixel
// (truncating), y in the high half, x in the low, each two's complement.
uint32_t packMousePosition(int16_t x, int16_t y);

}  // namespace tarvoke::host
