#include "host/mousekeys.h"

#include "engine/numeric.h"
#include "host/sendkeys.h"

namespace tarvoke::host {
namespace {

constexpr uint32_t kKeyDownMessage = 256;
constexpr uint32_t kKeyUpMessage = 257;
// A repeat count of 1 and scan code 1, for presses and releases alike.
constexpr uint32_t kKeyMessageLParam = 0x10001;

}  // namespace

std::optional<int16_t> ResolveCoordinate(Session& session, std::string_view text) {
    if (text == "lx" || text == "ly") session.settleLastClick();
    if (text == "lx") return session.intLastX;
    if (text == "ly") return session.intLastY;
    return engine::TextToInt16(text);
}

uint32_t packMousePosition(int16_t x, int16_t y) {
    const auto low = static_cast<uint16_t>(x / kTwipsPerPixel);
    const auto high = static_cast<uint16_t>(y / kTwipsPerPixel);
    return (static_cast<uint32_t>(high) << 16) | low;
}

void SendMouseMessage(Session& session, uint32_t message, int16_t x, int16_t y) {
    session.platform.input->sendMessage(session.hTargetWindow, message, 0, packMousePosition(x, y));
}

void SendKeyDown(Session& session, uint8_t code) {
    if (session.hTargetWindow != 0)
        session.platform.input->sendMessage(session.hTargetWindow, kKeyDownMessage, code, kKeyMessageLParam);
    else
        session.platform.input->keyEvent(code, platform::kKeyPress);
}

void SendKeyUp(Session& session, uint8_t code) {
    if (session.hTargetWindow != 0)
        session.platform.input->sendMessage(session.hTargetWindow, kKeyUpMessage, code, kKeyMessageLParam);
    else
        session.platform.input->keyEvent(code, platform::kKeyRelease);
}

void plainButton(Session& session, uint32_t firstFlag, uint32_t secondFlag) {
    platform::Input& input = *session.platform.input;
    // The position is asked for before the button goes down, and the
    // display answers in order, so it is the one at the click. An earlier
    // position that cannot fail the 16-bit rule is overtaken unread.
    if (session.pendingClickPoint && !session.pendingClickPoint->fitsInt16()) session.settleLastClick();
    session.pendingClickPoint = input.askCursorPos();
    input.mouseEvent(firstFlag);
    if (secondFlag != 0) input.mouseEvent(secondFlag);
}

void exButton(Session& session, const std::string& xText, const std::string& yText, uint32_t message, uint32_t flag) {
    // Both conversions come first: a bad y leaves the cursor where it is.
    const auto x = ResolveCoordinate(session, xText);
    if (!x) return;
    const auto y = ResolveCoordinate(session, yText);
    if (!y) return;
    if (session.hTargetWindow != 0) {
        SendMouseMessage(session, message, *x, *y);
        return;
    }
    session.platform.input->setCursorPos(*x, *y);
    session.platform.input->mouseEvent(flag);
    session.pendingClickPoint.reset();
    session.intLastX = *x;
    session.intLastY = *y;
}

void moveMouse(Session& session, const std::string& xText, const std::string& yText) {
    const auto x = engine::TextToInt32(xText);
    if (!x) return;
    const auto y = engine::TextToInt32(yText);
    if (!y) return;
    session.platform.input->setCursorPos(*x, *y);
}

void keyDown(Session& session, const std::string& code) {
    if (const auto vk = engine::TextToByte(code)) SendKeyDown(session, *vk);
}

void keyUp(Session& session, const std::string& code) {
    if (const auto vk = engine::TextToByte(code)) SendKeyUp(session, *vk);
}

void sendKeys(Session& session, const std::string& keys) {
    if (const auto strokes = parseSendKeys(keys)) session.platform.input->sendKeys(keys, *strokes);
}

void moveMouseToCenterScreen(Session& session) {
    const platform::Size size = session.platform.screen->screenSize();
    const double twipsWide = static_cast<double>(size.width) * kTwipsPerPixel;
    const double twipsHigh = static_cast<double>(size.height) * kTwipsPerPixel;
    const auto x = engine::roundToInt32(twipsWide / kTwipsPerPixel / 2);
    if (!x) return;
    const auto y = engine::roundToInt32(twipsHigh / kTwipsPerPixel / 2);
    if (!y) return;
    session.platform.input->setCursorPos(*x, *y);
}

}  // namespace tarvoke::host
