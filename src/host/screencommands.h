#pragma once
// The image and colour rows of the host command table (119, 120, 132, 135,
// 137, 138, 140, 142 to 155), run by the screen module.

#include <cstdint>

#include "engine/sc.h"

namespace tarvoke::host {

// Runs the command if it is one of those rows; false for any other number.
bool runScreenCommand(engine::SC& engine, int32_t functionID, int32_t lngLine);

}  // namespace tarvoke::host
