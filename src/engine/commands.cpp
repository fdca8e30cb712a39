#include "engine/commands.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/scripttext.h"

namespace tarvoke::engine {
namespace {

struct Entry {
    std::string_view name;
    int32_t number;
};

#define TARVOKE_TABLE_ENTRY(id, name, number, ...) Entry{name, number},
constexpr std::array kAll{TARVOKE_BUILTIN_COMMANDS(TARVOKE_TABLE_ENTRY) TARVOKE_HOST_COMMANDS(TARVOKE_TABLE_ENTRY)};
#undef TARVOKE_TABLE_ENTRY

// The lower-case names, made once; the loader looks names up in lower case.
struct Names {
    std::vector<std::string> lower;  // in row order
    std::unordered_map<std::string_view, int32_t> numberOf;
    std::unordered_map<int32_t, std::string_view> nameOf;

    Names() {
        lower.reserve(kAll.size());
        for (const Entry& entry : kAll) lower.push_back(lowerAscii(entry.name));
        for (size_t i = 0; i < kAll.size(); ++i) {
            numberOf.emplace(lower[i], kAll[i].number);  // first one wins
            nameOf.emplace(kAll[i].number, lower[i]);
        }
    }
};

const Names& names() {
    static const Names table;
    return table;
}

}  // namespace

Command commandNumber(std::string_view name) {
    const bool lower = std::none_of(name.begin(), name.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
    if (!lower) return commandNumber(lowerAscii(name));
    const auto found = names().numberOf.find(name);
    return found == names().numberOf.end() ? Command::Unknown : static_cast<Command>(found->second);
}

std::string_view commandName(int32_t number) {
    const auto found = names().nameOf.find(number);
    return found == names().nameOf.end() ? std::string_view() : found->second;
}

std::string_view scriptName(Command command) {
    for (const Entry& entry : kAll)
        if (entry.number == static_cast<int32_t>(command)) return entry.name;
    return {};
}

const HostRow* hostRow(int32_t number) {
    // Built once: the dispatch asks for every host statement it runs.
    static const std::array<const HostRow*, kLastHostCommand - kFirstHostCommand + 1> byNumber = [] {
        std::array<const HostRow*, kLastHostCommand - kFirstHostCommand + 1> table{};
        for (const HostRow& row : rows::kHost) {
            auto& slot = table[static_cast<size_t>(static_cast<int32_t>(row.command) - kFirstHostCommand)];
            if (!slot) slot = &row;
        }
        return table;
    }();
    if (number < kFirstHostCommand || number > kLastHostCommand) return nullptr;
    return byNumber[static_cast<size_t>(number - kFirstHostCommand)];
}

}  // namespace tarvoke::engine
