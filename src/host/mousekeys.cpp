#include "host/mousekeys.h"

#include "engine/numeric.h"
#include "host/call.h"
#include "host/sendkeys.h"

namespace tarvoke::host {
namespace {

using engine::Answer;

constexpr uint32_t kKeyDownMessage = 256;
constexpr uint32_t kKeyUpMessage = 257;
// A repeat count of 1 and scan code 1, for presses and releases alike.
constexpr uint32_t kKeyMessageLParam = 0x10001;

// The window messages of the Ex button commands.
enum ButtonMessage : uint32_t {
    kLeftDownMessage = 513,
    kLeftUpMessage = 514,
    kRightDownMessage = 516,
    kRightUpMessage = 517,
    kMiddleDownMessage = 519,
    kMiddleUpMessage = 520,
};

void sendKey(Session& session, uint8_t code, bool press) {
    if (session.targetWindow != 0)
        session.platform.input->sendMessage(session.targetWindow, press ? kKeyDownMessage : kKeyUpMessage, code,
                                            kKeyMessageLParam);
    else
        session.platform.input->keyEvent(code, press ? platform::kKeyPress : platform::kKeyRelease);
}

// The nine plain button commands: at the cursor, always on the input stream.
// One button flag, or a down and an up flag for a click (0: none).
Answer plainButton(Session& session, uint32_t firstFlag, uint32_t secondFlag = 0) {
    platform::Input& input = *session.platform.input;
    // The position is asked for before the button goes down, and the
    // display answers in order, so it is the one at the click. An earlier
    // position that cannot fail the 16-bit rule is overtaken unread.
    if (session.pendingClickPoint && !session.pendingClickPoint->fitsInt16()) session.settleLastClick();
    session.pendingClickPoint = input.askCursorPos();
    if (secondFlag != 0) input.mouseClick(firstFlag, secondFlag);
    else input.mouseEvent(firstFlag);
    return {};
}

// The six Ex button commands: a point, and either a message to the target
// window or a move and a button event.
Answer exButton(Call& call, uint32_t message, uint32_t flag) {
    Session& session = call.session;
    const int16_t x = call.int16(0), y = call.int16(1);
    if (session.targetWindow != 0) {
        session.platform.input->sendMessage(session.targetWindow, message, 0, packMousePosition(x, y));
        return {};
    }
    session.platform.input->setCursorPos(x, y);
    session.platform.input->mouseEvent(flag);
    session.pendingClickPoint.reset();
    session.lastX = x;
    session.lastY = y;
    return {};
}

}  // namespace

std::optional<int16_t> resolveCoordinate(Session& session, std::string_view text) {
    if (text == "lx" || text == "ly") session.settleLastClick();
    if (text == "lx") return session.lastX;
    if (text == "ly") return session.lastY;
    return engine::textToInt16(text);
}

uint32_t packMousePosition(int16_t x, int16_t y) {
    const auto low = static_cast<uint16_t>(x / kTwipsPerPixel);
    const auto high = static_cast<uint16_t>(y / kTwipsPerPixel);
    return (static_cast<uint32_t>(high) << 16) | low;
}

namespace handlers {

using namespace platform;

Answer leftDown(Call& call) { return plainButton(call.session, kLeftDown); }
Answer leftUp(Call& call) { return plainButton(call.session, kLeftUp); }
Answer leftClick(Call& call) { return plainButton(call.session, kLeftDown, kLeftUp); }
Answer rightDown(Call& call) { return plainButton(call.session, kRightDown); }
Answer rightUp(Call& call) { return plainButton(call.session, kRightUp); }
Answer rightClick(Call& call) { return plainButton(call.session, kRightDown, kRightUp); }
Answer middleDown(Call& call) { return plainButton(call.session, kMiddleDown); }
Answer middleUp(Call& call) { return plainButton(call.session, kMiddleUp); }
Answer middleClick(Call& call) { return plainButton(call.session, kMiddleDown, kMiddleUp); }
Answer leftDownEx(Call& call) { return exButton(call, kLeftDownMessage, kLeftDown); }
Answer leftUpEx(Call& call) { return exButton(call, kLeftUpMessage, kLeftUp); }
Answer rightDownEx(Call& call) { return exButton(call, kRightDownMessage, kRightDown); }
Answer rightUpEx(Call& call) { return exButton(call, kRightUpMessage, kRightUp); }
Answer middleDownEx(Call& call) { return exButton(call, kMiddleDownMessage, kMiddleDown); }
Answer middleUpEx(Call& call) { return exButton(call, kMiddleUpMessage, kMiddleUp); }

Answer moveMouse(Call& call) {
    call.session.platform.input->setCursorPos(call.int32(0), call.int32(1));
    return {};
}

Answer keyDown(Call& call) {
    sendKey(call.session, static_cast<uint8_t>(call.int32(0)), true);
    return {};
}

Answer keyUp(Call& call) {
    sendKey(call.session, static_cast<uint8_t>(call.int32(0)), false);
    return {};
}

Answer sendKeys(Call& call) {
    const std::string& keys = call.text(0);
    if (!acceptsSendKeys(keys)) return {};
    KeyStringStrokes strokes(keys);
    call.session.platform.input->sendKeys(keys, strokes);
    return {};
}

Answer moveMouseToCenterScreen(Call& call) {
    Session& session = call.session;
    const platform::Size size = session.platform.screen->screenSize();
    const double twipsWide = static_cast<double>(size.width) * kTwipsPerPixel;
    const double twipsHigh = static_cast<double>(size.height) * kTwipsPerPixel;
    const auto x = engine::roundToInt32(twipsWide / kTwipsPerPixel / 2);
    if (!x) return {};
    const auto y = engine::roundToInt32(twipsHigh / kTwipsPerPixel / 2);
    if (!y) return {};
    session.platform.input->setCursorPos(*x, *y);
    return {};
}

}  // namespace handlers
}  // namespace tarvoke::host
