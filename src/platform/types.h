#pragma once

#include <cstdint>

namespace tarvoke::platform {

struct Point {
    int32_t x = 0;
    int32_t y = 0;
    bool operator==(const Point&) const = default;
};

struct Size {
    int32_t width = 0;
    int32_t height = 0;
    bool operator==(const Size&) const = default;
};

// A window handle; 0 is no window.
using WindowId = uint32_t;

}  // namespace tarvoke::platform
