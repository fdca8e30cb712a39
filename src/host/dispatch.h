#pragma once
// The dispatch of the host commands 100 to 157.

#include "engine/sc.h"

namespace tarvoke::host {

class HostCommands : public engine::ExternalCommands {
public:
    void execute(engine::SC& engine, int32_t functionID, int32_t lngLine) override;
};

}  // namespace tarvoke::host
