#include "screen/colorrange.h"

#include <algorithm>

namespace tarvoke::screen {
namespace {

// Cuts [lo, hi] to the byte range; false when nothing of it is left.
bool cut(int lo, int hi, uint8_t& outLo, uint8_t& outHi) {
    lo = std::max(lo, 0);
    hi = std::min(hi, 255);
    if (lo > hi) return false;
    outLo = static_cast<uint8_t>(lo);
    outHi = static_cast<uint8_t>(hi);
    return true;
}

}  // namespace

ByteBox byteBoxOf(const ColorBound& min, const ColorBound& max) {
    ByteBox box;
    box.possible = cut(min.Red, max.Red, box.redLo, box.redHi) && cut(min.Green, max.Green, box.greenLo, box.greenHi) &&
                   cut(min.Blue, max.Blue, box.blueLo, box.blueHi);
    return box;
}

}  // namespace tarvoke::screen
