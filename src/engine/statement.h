#pragma once
// One statement of the table: its command number, its parameters and the
// jump target found at load.

#include <array>
#include <cstdint>
#include <string>

namespace tarvoke::engine {

// The eight parameter slots at [0] .. [7]. A recording holds hundreds of
// thousands of statements with one or two parameters each, so only the
// parameters a statement has are stored, in the engine's parameter store; a
// slot beyond them reads as empty, and what is written there is dropped.
// A view: copies of a statement share the engine's texts, and a new load
// invalidates them.
class Parameters {
public:
    static constexpr size_t kSlots = 8;

    std::string& operator[](size_t k) { return k < m_count ? m_first[k] : emptySlot(); }
    const std::string& operator[](size_t k) const { return k < m_count ? m_first[k] : kEmpty; }
    static constexpr size_t size() { return kSlots; }
    // How many slots hold a text of the script.
    size_t stored() const { return m_count; }

private:
    friend class SC;
    static std::string& emptySlot();
    static const std::string kEmpty;

    std::string* m_first = nullptr;
    uint32_t m_count = 0;
};

struct Statement {
    int32_t number = -1;  // the command's, -1 for a name in no row
    // Found once at load, with the same result as counting at run time:
    // the line an if/else/while skip stops at, the while an endwhile goes
    // back to, the function a call enters; kEndsRun where the skip runs off.
    int32_t jump = 0;
    Parameters parameters;
};

}  // namespace tarvoke::engine
