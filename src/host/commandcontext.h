#pragma once
// What a host command branch works with: the engine, its statement's line and
// the session. Parameters are resolved afresh on each call, so a variable's
// current value is seen; nothing here holds a reference into the engine's
// tables, which a handler running inside a wait may replace.

#include <optional>
#include <string>

#include "engine/sc.h"
#include "host/session.h"

namespace tarvoke::host {

class CommandContext {
public:
    CommandContext(engine::SC& engine, int32_t lngLine) : m_engine(engine), m_line(lngLine) {}

    engine::SC& engine() { return m_engine; }
    Session& session() { return m_engine.session(); }
    platform::Platform& platform() { return m_engine.session().platform; }

    // The raw text of parameter n (1 to 8), as the load left it.
    std::string raw(int n) const;
    // Parameter n resolved to a text by GetVariableAsString.
    std::string text(int n) const;
    // Parameter n resolved, or no text at all when the script left the slot
    // empty (a look-up then matches anything).
    std::optional<std::string> optionalText(int n) const;

private:
    engine::SC& m_engine;
    int32_t m_line;
};

}  // namespace tarvoke::host
