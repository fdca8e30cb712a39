#pragma once
// Starting programs and documents, detached.

#include <cstdint>
#include <string>

namespace tarvoke::platform {

class Programs {
public:
    virtual ~Programs() = default;
    // verb as the script gives it ("Open"), show: 1 normal, 2 minimized, 3 maximized ...
    virtual void shellExecute(const std::string& verb, const std::string& file,
                              const std::string& parameters, int32_t show) = 0;
};

}  // namespace tarvoke::platform
