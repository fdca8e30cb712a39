#pragma once
// The pause commands, the percentage that scales them and the switch that
// turns them off.

#include <cstdint>
#include <functional>

namespace tarvoke::host {

// The longest single wait of Pause; longer pauses wait in pieces of it.
constexpr int32_t kPausePiece = 9999;

// The milliseconds of each wait a pause of ms makes: one wait up to the
// piece, else pieces of 9999 and the rest (a rest of 0 when ms is a
// multiple of the piece). Negative ms counts as 0.
void forEachPausePiece(int32_t ms, const std::function<bool(int32_t)>& wait);

}  // namespace tarvoke::host
