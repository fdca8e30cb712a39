#pragma once
// The state of keys and buttons by virtual-key number, read without a round
// trip to the display.

#include <cstdint>

namespace tarvoke::platform {

class KeyState {
public:
    virtual ~KeyState() = default;
    // Down now.
    virtual bool isDown(uint8_t vk) = 0;
    // Pressed since the last call of this for the same key; the reader that
    // asks owns the bit, and isDown never clears it.
    virtual bool pressedSinceLastRead(uint8_t vk) = 0;
    // From now on the buttons and the pointer's moves are followed as they
    // happen (the recorder's needs). Until then a platform may follow the
    // keys alone, which is all a run needs, and ask for a button's state
    // when it is read.
    virtual void followPointer() {}
    // While a run is active the stop key (Ctrl+0) is kept from the
    // applications; a platform that cannot do so ignores this.
    virtual void claimStopKey(bool) {}
};

}  // namespace tarvoke::platform
