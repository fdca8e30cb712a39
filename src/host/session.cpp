#include "host/session.h"

#include "engine/numeric.h"

namespace tarvoke::host {

void Session::settleLastClick() {
    if (!pendingClickPoint) return;
    ptCursor = pendingClickPoint->get();
    pendingClickPoint.reset();
    // A position beyond 16 bits ends the step before "lx" and "ly" change.
    const auto x = engine::roundToInt16(ptCursor.x);
    if (!x) return;
    intLastX = *x;
    const auto y = engine::roundToInt16(ptCursor.y);
    if (!y) return;
    intLastY = *y;
}

}  // namespace tarvoke::host
