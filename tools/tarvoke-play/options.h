#pragma once
// The command line of tarvoke-play.

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tarvoke::player {

struct Options {
    bool dryRun = false;
    bool dump = false;
    bool loadOnly = false;
    bool ignorePauses = false;
    std::optional<double> percent;
    int repeat = 1;
    std::string file;  // "-" is standard input
};

struct ShowHelp {};
struct UsageError {
    std::string message;
};

using ParseResult = std::variant<Options, ShowHelp, UsageError>;

ParseResult parseOptions(const std::vector<std::string>& arguments);
extern const char* const kUsage;

}  // namespace tarvoke::player
