#include "host/session.h"

#include "engine/numeric.h"

namespace tarvoke::host {

void Session::settleLastClick() {
    if (!pendingClickPoint) return;
    cursor = pendingClickPoint->get();
    pendingClickPoint.reset();
    // A position beyond 16 bits ends the step before "lx" and "ly" change.
    const auto x = engine::roundToInt16(cursor.x);
    if (!x) return;
    lastX = *x;
    const auto y = engine::roundToInt16(cursor.y);
    if (!y) return;
    lastY = *y;
}

}  // namespace tarvoke::host
