#pragma once

#include <cstdint>

namespace tarvoke::screen {

// A rectangle of image positions, both corners included. x2 < x1 or y2 < y1
// holds no position.
struct Area {
    int32_t x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    bool isEmpty() const { return x2 < x1 || y2 < y1; }
};

struct Position {
    int32_t x = 0;
    int32_t y = 0;
    bool operator==(const Position&) const = default;
};

}  // namespace tarvoke::screen
