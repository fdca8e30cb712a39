#pragma once
// All the engine asks of the program around it. The engine owns this
// interface, so it builds and is tested without the host commands, the
// platform or the windows.

#include <cstdint>
#include <optional>
#include <string>

#include "engine/commands.h"

namespace tarvoke::engine {

class SC;

// What a host command hands back; the engine stores it in the variable its
// first parameter names.
struct Answer {
    enum class Kind : uint8_t { None, Test, Measure };
    Kind kind = Kind::None;
    bool passed = false;
    std::optional<double> value;  // a measure whose step failed has none

    static Answer none() { return {}; }
    static Answer test(bool passed) { return {Kind::Test, passed, std::nullopt}; }
    static Answer measure(std::optional<double> value) { return {Kind::Measure, false, value}; }
};

// Where scripts read the last click or find, as "lx" and "ly".
struct LastPoint {
    int16_t x = 0;
    int16_t y = 0;
};

class Environment {
public:
    virtual ~Environment() = default;
    // Lets the event loop run before a statement; a stop, a pause or a new
    // load may happen inside.
    virtual void yield() = 0;
    // Whether a stop is on its way that the event loop has not handled yet:
    // long steps look at it between pieces of work and give up.
    virtual bool stopPending() const = 0;
    virtual void showMessage(uint32_t flags, const std::string& title, const std::string& text) = 0;
    virtual LastPoint lastPoint() = 0;
    // Runs a host command's row on the statement at line.
    virtual Answer runCommand(SC& engine, const HostRow& row, int32_t line) = 0;
};

}  // namespace tarvoke::engine
