#pragma once
// The state of keys and buttons by virtual-key number, read without a round
// trip to the display.

#include <cstdint>
#include <functional>
#include <optional>

#include "platform/types.h"

namespace tarvoke::platform {

// One press, release or pointer move, as the display saw it.
struct InputChange {
    uint32_t time = 0;             // the display's milliseconds (they wrap at 2^32)
    std::optional<Point> pointer;  // where the pointer was then, when known
};

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

    // Calls the listener once for every press and release of a key or a
    // button, and for the pointer's moves, in the order the display saw
    // them, while isDown answers as of right after that change (so a press
    // and release within one millisecond are two calls). An empty function
    // ends the calls. False when this platform cannot tell of each change;
    // its readers then sample.
    virtual bool onChange(std::function<void(const InputChange&)> listener) {
        (void)listener;
        return false;
    }
};

}  // namespace tarvoke::platform
