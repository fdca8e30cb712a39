#pragma once
// Mouse and keyboard commands. Two roads: with no target window, events go
// into the input stream at the cursor; with one, the Ex button commands and
// the key commands send a message to that window and the cursor stays.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/session.h"

namespace tarvoke::host {

// The position a window message carries is the script's number divided by
// this fixed factor (twips per pixel at 96 dots per inch).
constexpr int32_t kTwipsPerPixel = 15;

// "lx", "ly" or a 16-bit number; empty when the text is none of these.
std::optional<int16_t> ResolveCoordinate(Session& session, std::string_view text);

// The lParam of a button message: x and y divided by the twips per pixel
// (truncating), y in the high half, x in the low, each two's complement.
uint32_t packMousePosition(int16_t x, int16_t y);
void SendMouseMessage(Session& session, uint32_t message, int16_t x, int16_t y);
void SendKeyDown(Session& session, uint8_t code);
void SendKeyUp(Session& session, uint8_t code);

// The nine plain button commands: at the cursor, always on the input stream.
// flags holds one button flag, or a down and an up flag for a click (0: none).
void plainButton(Session& session, uint32_t firstFlag, uint32_t secondFlag = 0);
// The six Ex button commands: a point, and either a message to the target
// window or a move and a button event.
void exButton(Session& session, const std::string& x, const std::string& y, uint32_t message, uint32_t flag);
void moveMouse(Session& session, const std::string& x, const std::string& y);
void keyDown(Session& session, const std::string& code);
void keyUp(Session& session, const std::string& code);
void sendKeys(Session& session, const std::string& keys);
void moveMouseToCenterScreen(Session& session);

}  // namespace tarvoke::host
