#include "options.h"

#include <algorithm>
#include <string_view>

#include "engine/numeric.h"

namespace tarvoke::player {

const char* const kUsage =
    "usage: tarvoke-play [--dry-run] [--dump] [--load-only] [--ignore-pauses] [--percent P] [--repeat N]\n"
    "                    [--screen WxH] [--screen-image FILE] [--write-pictures] [--max-text-memory SIZE]\n"
    "                    FILE.tk | -\n"
    "       tarvoke-play --check FILE.tk | -\n"
    "       tarvoke-play --record FILE.tk [--force] [--no-mouse-move] [--no-extended-clicks]\n"
    "       tarvoke-play --headless[=WxH] [--wm PROGRAM] [--screenshot FILE.png] [OPTIONS] FILE.tk | -\n"
    "       tarvoke-play --compile FILE.tk PROGRAM [--repeat]\n"
    "\n"
    "Runs a Tarvoke script, or records one.\n"
    "  --dry-run        act on nothing: print one line for every action, wait on a virtual clock\n"
    "  --dump           print the engine's dump (statements, functions, variables) after the last run\n"
    "  --load-only      load the script and run nothing (with --dump: print the dump of the load)\n"
    "  --check          run nothing: print FILE:LINE:COLUMN: and a message for each mistake the script\n"
    "                   holds (unknown commands, dropped parameters, unclosed blocks, ...); exit 1 if any\n"
    "  --ignore-pauses  skip every Pause, PauseS, PauseM and PauseH\n"
    "  --percent P      scale every pause to P percent; SetPausePercent statements are passed over\n"
    "  --repeat N       run the script N times on one load, keeping its variables\n"
    "  --screen WxH     the screen size of a dry run (default 1920x1080)\n"
    "  --screen-image FILE  in a dry run, every capture returns this picture and the screen has its size\n"
    "  --write-pictures in a dry run, let SaveImage write its picture (else it prints its line only)\n"
    "  --max-text-memory SIZE  the most the script's texts may hold together, in bytes or with K, M, G\n"
    "                   (default 1G); a step that would need more fails\n"
    "  -                read the script from standard input\n"
    "  --record FILE    record the mouse and the keyboard into a new script FILE; Ctrl+0 ends it\n"
    "  --force          with --record: overwrite FILE if it exists\n"
    "  --no-mouse-move  with --record: leave out the mouse moves\n"
    "  --no-extended-clicks  with --record: record clicks without their positions\n"
    "  --headless[=WxH] play on a private virtual screen (Xvfb, default 1920x1080) that ends with the run\n"
    "  --wm PROGRAM     with --headless: start this window manager (such as openbox) on that screen first\n"
    "  --screenshot FILE.png  with --headless: save the screen as it is at the end of the run\n"
    "  --compile FILE.tk PROGRAM  write a stand-alone program that plays the script (- for standard\n"
    "                   input); with --repeat it plays it over and over until Ctrl+0\n"
    "  --version        print the version\n"
    "Stop a run or a recording with Ctrl+0, Ctrl+C or SIGTERM.\n";

namespace {

constexpr std::string_view kHeadlessWithSize = "--headless=";

// Reads the value of an option that takes one, from "--opt V" or "--opt=V".
std::optional<std::string> valueOf(const std::vector<std::string>& args, size_t& i, const std::string& name) {
    const std::string& arg = args[i];
    if (arg.rfind(name + "=", 0) == 0) return arg.substr(name.size() + 1);
    if (arg != name) return std::nullopt;
    if (i + 1 >= args.size()) return std::string();
    return args[++i];
}

// "WxH" with two whole numbers from 1 to 32767.
std::optional<std::pair<int32_t, int32_t>> screenSize(const std::string& text) {
    const size_t x = text.find('x');
    if (x == std::string::npos) return std::nullopt;
    const std::string width = text.substr(0, x), height = text.substr(x + 1);
    for (const std::string* part : {&width, &height})
        if (part->empty() || part->size() > 5 || part->find_first_not_of("0123456789") != std::string::npos)
            return std::nullopt;
    const int32_t w = std::stoi(width), h = std::stoi(height);
    if (w < 1 || h < 1 || w > 32767 || h > 32767) return std::nullopt;
    return std::pair{w, h};
}

// A number of bytes, with an optional K, M or G (powers of 1024).
std::optional<uint64_t> byteSize(const std::string& text) {
    if (text.empty() || text.size() > 15) return std::nullopt;
    std::string digits = text;
    uint64_t unit = 1;
    switch (text.back()) {
    case 'k': case 'K': unit = uint64_t{1} << 10; break;
    case 'm': case 'M': unit = uint64_t{1} << 20; break;
    case 'g': case 'G': unit = uint64_t{1} << 30; break;
    default: break;
    }
    if (unit != 1) digits.pop_back();
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
    const uint64_t value = std::stoull(digits);
    if (value == 0 || value > (uint64_t{1} << 50) / unit) return std::nullopt;
    return value * unit;
}

}  // namespace

namespace {

// --compile IN OUT with --repeat as a flag, and nothing else.
ParseResult parseCompile(const std::vector<std::string>& args) {
    Options options;
    std::vector<std::string> files;
    for (const std::string& arg : args) {
        if (arg == "--compile") continue;
        if (arg == "--repeat") options.compileRepeat = true;
        else if (arg.size() > 1 && arg[0] == '-') return UsageError{"--compile takes only --repeat, not '" + arg + "'"};
        else files.push_back(arg);
    }
    if (files.size() != 2 || files[1].empty() || files[1] == "-")
        return UsageError{"--compile needs the script and the program to write: --compile FILE.tk PROGRAM"};
    options.file = files[0];
    options.compileTarget = files[1];
    return options;
}

}  // namespace

ParseResult parseOptions(const std::vector<std::string>& args) {
    if (std::find(args.begin(), args.end(), "--compile") != args.end() &&
        std::find(args.begin(), args.end(), "--help") == args.end())
        return parseCompile(args);
    Options options;
    bool haveFile = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--help" || arg == "-h") return ShowHelp{};
        if (arg == "--version") return ShowVersion{};
        if (arg == "--dry-run") {
            options.dryRun = true;
        } else if (arg == "--dump") {
            options.dump = true;
        } else if (arg == "--load-only") {
            options.loadOnly = true;
        } else if (arg == "--check") {
            options.check = true;
        } else if (arg == "--ignore-pauses") {
            options.ignorePauses = true;
        } else if (auto percent = valueOf(args, i, "--percent")) {
            const auto value = engine::textToDouble(*percent);
            if (!value || *value < 0) return UsageError{"--percent needs a number of 0 or more, not '" + *percent + "'"};
            options.percent = *value;
        } else if (auto repeat = valueOf(args, i, "--repeat")) {
            const auto value = engine::textToInt32(*repeat);
            if (!value || *value < 1 || repeat->find('.') != std::string::npos)
                return UsageError{"--repeat needs a whole number of 1 or more, not '" + *repeat + "'"};
            options.repeat = *value;
        } else if (auto screen = valueOf(args, i, "--screen")) {
            options.screen = screenSize(*screen);
            if (!options.screen) return UsageError{"--screen needs WIDTHxHEIGHT such as 1920x1080, not '" + *screen + "'"};
        } else if (auto picture = valueOf(args, i, "--screen-image")) {
            if (picture->empty()) return UsageError{"--screen-image needs a picture file"};
            options.screenImage = *picture;
        } else if (arg == "--write-pictures") {
            options.writePictures = true;
        } else if (auto memory = valueOf(args, i, "--max-text-memory")) {
            const auto bytes = byteSize(*memory);
            if (!bytes) return UsageError{"--max-text-memory needs a size such as 512M or 2G, not '" + *memory + "'"};
            options.maxTextMemory = *bytes;
        } else if (auto record = valueOf(args, i, "--record")) {
            if (record->empty()) return UsageError{"--record needs the file to write the recording to"};
            options.record = *record;
        } else if (arg == "--headless" || arg.starts_with(kHeadlessWithSize)) {
            const std::string size = arg.substr(std::min(arg.size(), kHeadlessWithSize.size()));
            options.headless = arg == "--headless" ? std::pair{1920, 1080} : screenSize(size);
            if (!options.headless) return UsageError{"--headless= needs WIDTHxHEIGHT such as 1280x1024, not '" + size + "'"};
        } else if (auto wm = valueOf(args, i, "--wm")) {
            if (wm->empty()) return UsageError{"--wm needs the window manager to start, such as openbox"};
            options.windowManager = *wm;
        } else if (auto screenshot = valueOf(args, i, "--screenshot")) {
            if (screenshot->empty()) return UsageError{"--screenshot needs the file to write the screen to"};
            options.screenshot = *screenshot;
        } else if (arg == "--force") {
            options.force = true;
        } else if (arg == "--no-mouse-move") {
            options.mouseMove = false;
        } else if (arg == "--no-extended-clicks") {
            options.extendedClicks = false;
        } else if (arg.size() > 1 && arg[0] == '-') {
            return UsageError{"unknown option '" + arg + "'"};
        } else {
            if (haveFile) return UsageError{"only one script can be played, got '" + options.file + "' and '" + arg + "'"};
            options.file = arg;
            haveFile = true;
        }
    }
    if (!options.headless && (!options.windowManager.empty() || !options.screenshot.empty()))
        return UsageError{"--wm and --screenshot go with --headless"};
    if (options.headless && (options.record || options.dryRun || options.loadOnly))
        return UsageError{"--headless plays a script on a virtual screen: no --record, --dry-run or --load-only"};
    if (options.check && (options.record || options.dryRun || options.loadOnly || options.dump || options.headless))
        return UsageError{"--check runs nothing: no --record, --dry-run, --load-only, --dump or --headless"};
    if (options.record) {
        if (haveFile) return UsageError{"--record writes a new script; it plays none, so leave out '" + options.file + "'"};
        if (options.dryRun || options.loadOnly) return UsageError{"--record records from the desktop: no --dry-run or --load-only"};
        return options;
    }
    if (options.force || !options.mouseMove || !options.extendedClicks)
        return UsageError{"--force, --no-mouse-move and --no-extended-clicks go with --record"};
    if (!haveFile) return UsageError{"no script given"};
    if (!options.screenImage.empty() && !options.dryRun) return UsageError{"--screen-image needs --dry-run"};
    if (options.writePictures && !options.dryRun)
        return UsageError{"--write-pictures goes with --dry-run (a run on the desktop always writes pictures)"};
    return options;
}

}  // namespace tarvoke::player
