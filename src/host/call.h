#pragma once
// What a host command's handler works with: the session, the engine (for the
// run's state) and its parameters, decoded by the row's shape before the
// handler runs. A handler runs only when every parameter decoded; it does
// its step and hands back the answer, which the engine stores.

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "engine/commands.h"
#include "engine/environment.h"
#include "engine/numeric.h"
#include "engine/sc.h"
#include "host/session.h"

namespace tarvoke::host {

// One decoded parameter; the member its Param fills is set, the rest hold
// nothing.
struct Value {
    std::string text;
    bool present = false;                   // OptionalText: the slot held a text
    int32_t integer = 0;                    // Coordinate, Byte, Int16, Int32
    double number = 0;                      // Number
    std::optional<int16_t> slot;            // Image, Range
};

struct Call {
    Session& session;
    engine::SC& engine;
    const std::array<Value, 8>& values;

    const std::string& text(int k) const { return values[k].text; }
    std::optional<std::string> optionalText(int k) const {
        return values[k].present ? std::optional<std::string>(values[k].text) : std::nullopt;
    }
    int16_t int16(int k) const { return static_cast<int16_t>(values[k].integer); }
    int32_t int32(int k) const { return values[k].integer; }
    double number(int k) const { return values[k].number; }
    std::optional<int16_t> slot(int k) const { return values[k].slot; }
};

using Handler = engine::Answer (*)(Call&);

// One handler per row, named in the row (engine/commands.h) and defined with
// its family: mousekeys, pauses, windowcommands, screencommands, dispatch.
namespace handlers {
#define TARVOKE_DECLARE_HANDLER(id, name, number, effect, handler, params) engine::Answer handler(Call& call);
TARVOKE_HOST_COMMANDS(TARVOKE_DECLARE_HANDLER)
#undef TARVOKE_DECLARE_HANDLER
}  // namespace handlers

// How scripts name image slots (the checker reads them too) and colour ranges.
using engine::imageSlot;
// Only the 11th byte of a range name counts, read as one digit:
// "colorrange3" is range 3 and "colorrange12" is range 1.
std::optional<int16_t> rangeSlot(std::string_view name);

}  // namespace tarvoke::host
