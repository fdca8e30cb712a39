#pragma once
// Modal message boxes.

#include <cstdint>
#include <string>

namespace tarvoke::platform {

class MessageBoxes {
public:
    virtual ~MessageBoxes() = default;
    // flags as the script styles give them (16 stop icon, 32 question ...).
    // Blocks until the box is closed; handlers may run meanwhile.
    virtual void show(uint32_t flags, const std::string& title, const std::string& text) = 0;
};

}  // namespace tarvoke::platform
