#pragma once
// The command line of tarvoke-play.

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tarvoke::player {

struct Options {
    bool dryRun = false;
    bool dump = false;
    bool loadOnly = false;
    bool check = false;  // --check: report the script's mistakes, run nothing
    bool ignorePauses = false;
    std::optional<double> percent;
    int repeat = 1;
    // --screen WxH: the size of the dry run's screen.
    std::optional<std::pair<int32_t, int32_t>> screen;
    std::string screenImage;  // dry run: every capture returns this picture
    bool writePictures = false;  // dry run: saveimage really writes
    std::string explain;  // --explain DIR: why each search found nothing, pictures into DIR
    // The most the script's texts may hold together, in bytes.
    uint64_t maxTextMemory = uint64_t{1} << 30;
    std::string file;  // "-" is standard input

    // --record FILE: record input into FILE instead of playing a script.
    std::optional<std::string> record;
    bool force = false;  // overwrite an existing recording
    bool mouseMove = true;
    bool extendedClicks = true;

    // --headless[=WxH]: play on a private virtual screen of that size.
    std::optional<std::pair<int32_t, int32_t>> headless;
    std::string windowManager;  // --wm PROGRAM on that screen
    std::string screenshot;     // --screenshot FILE.png: the screen at the end

    // --compile IN OUT [--repeat]: write a compiled program instead of playing.
    std::string compileTarget;  // OUT; file is IN
    bool compileRepeat = false;
};

struct ShowHelp {};
struct ShowVersion {};
struct UsageError {
    std::string message;
};

using ParseResult = std::variant<Options, ShowHelp, UsageError, ShowVersion>;

ParseResult parseOptions(const std::vector<std::string>& arguments);
extern const char* const kUsage;

}  // namespace tarvoke::player
