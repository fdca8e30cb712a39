#include "engine/commands.h"

#include <array>
#include <string>
#include <unordered_map>

namespace tarvoke::engine {
namespace {

struct Entry {
    std::string_view name;
    int32_t number;
};

#define TARVOKE_TABLE_ENTRY(id, name, number) Entry{name, number},
constexpr std::array kBuiltins{TARVOKE_BUILTIN_COMMANDS(TARVOKE_TABLE_ENTRY)};
constexpr std::array kHostCommands{TARVOKE_HOST_COMMANDS(TARVOKE_TABLE_ENTRY)};
#undef TARVOKE_TABLE_ENTRY

using NameIndex = std::unordered_map<std::string_view, int32_t>;

template <size_t N>
NameIndex makeIndex(const std::array<Entry, N>& table) {
    NameIndex index;
    for (const Entry& entry : table) index.emplace(entry.name, entry.number);  // first one wins
    return index;
}

int32_t lookUp(const NameIndex& index, std::string_view name) {
    const auto found = index.find(name);
    return found == index.end() ? -1 : found->second;
}

template <size_t N>
std::string_view nameOf(const std::array<Entry, N>& table, int32_t number) {
    for (const Entry& entry : table)
        if (entry.number == number) return entry.name;
    return {};
}

}  // namespace

int32_t builtinCommandNumber(std::string_view lowerName) {
    static const NameIndex index = makeIndex(kBuiltins);
    return lookUp(index, lowerName);
}

int32_t hostCommandNumber(std::string_view lowerName) {
    static const NameIndex index = makeIndex(kHostCommands);
    return lookUp(index, lowerName);
}

std::string_view builtinCommandName(int32_t number) { return nameOf(kBuiltins, number); }
std::string_view hostCommandName(int32_t number) { return nameOf(kHostCommands, number); }

}  // namespace tarvoke::engine
