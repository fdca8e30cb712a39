#include "host/dispatch.h"

namespace tarvoke::host {

void HostCommands::execute(engine::SC&, int32_t, int32_t) {}

}  // namespace tarvoke::host
