#include "host/screencommands.h"

namespace tarvoke::host {

bool runScreenCommand(engine::SC&, int32_t, int32_t) { return false; }

}  // namespace tarvoke::host
