#include "engine/statement.h"

namespace tarvoke::engine {

const std::string Parameters::kEmpty;

std::string& Parameters::emptySlot() {
    // Handed out for a slot the statement does not have; emptied each time,
    // so a text written there never reaches another reader.
    thread_local std::string slot;
    slot.clear();
    return slot;
}

}  // namespace tarvoke::engine
