#include "platform/fake/fakeplatform.h"

namespace tarvoke::platform::fake {

void FakeInput::mouseEvent(uint32_t flags) {
    DryRunInput::mouseEvent(flags);
    switch (flags) {
    case kLeftDown: m_keyboard.pressVirtualKey(1, true); break;
    case kLeftUp: m_keyboard.pressVirtualKey(1, false); break;
    case kRightDown: m_keyboard.pressVirtualKey(2, true); break;
    case kRightUp: m_keyboard.pressVirtualKey(2, false); break;
    case kMiddleDown: m_keyboard.pressVirtualKey(4, true); break;
    case kMiddleUp: m_keyboard.pressVirtualKey(4, false); break;
    default: break;
    }
}

void FakeInput::keyEvent(uint8_t vk, uint32_t flags) {
    DryRunInput::keyEvent(vk, flags);
    m_keyboard.pressVirtualKey(vk, flags != kKeyRelease);
}

dryrun::LineSink FakePlatform::sink() {
    return [this](std::string_view line) { transcript.emplace_back(line); };
}

FakePlatform::FakePlatform()
    : windows(sink()),
      input(sink(), keyboard),
      programs(sink()),
      screen(sink()),
      clock(sink(),
            [this] {
                ++yields;
                if (onYield) onYield();
            }),
      messages(sink()) {}

Platform FakePlatform::platform() { return {&input, &keyboard, &windows, &programs, &screen, &clock, &messages}; }

}  // namespace tarvoke::platform::fake
