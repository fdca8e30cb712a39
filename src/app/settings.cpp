#include "app/settings.h"

#include <cstdlib>
#include <unistd.h>

#include "app/filesave.h"
#include "platform/fileread.h"

namespace tarvoke::app {

std::string settingsField(const std::string& text, int16_t index) {
    if (index < 1) return {};
    int commas = 0;
    std::string field;
    for (char c : text) {
        if (c == ',') {
            if (++commas == index) return field;
            continue;
        }
        if (commas == index - 1) field += c;
    }
    return commas == index - 1 ? field : std::string();
}

Settings parseSettings(const std::string& text) {
    auto flag = [&](int16_t index) { return settingsField(text, index) == "1"; };
    return {flag(1), flag(2), flag(3), flag(4), flag(5)};
}

std::string formatSettings(const Settings& s) {
    std::string text;
    for (bool value : {s.repeat, s.mouseMove, s.extendedClicks, s.ignorePauses, s.basicMode})
        text += value ? "1," : "0,";
    return text;
}

std::filesystem::path settingsFolder(const std::filesystem::path& programFolder) {
    if (const char* dir = std::getenv("TARVOKE_SETTINGS_DIR"); dir && *dir) return dir;
    if (::access(programFolder.c_str(), W_OK) == 0) return programFolder;
    std::filesystem::path config;
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg)
        config = xdg;
    else if (const char* home = std::getenv("HOME"); home && *home)
        config = std::filesystem::path(home) / ".config";
    else
        return programFolder;
    std::error_code error;
    std::filesystem::create_directories(config / "tarvoke", error);
    return config / "tarvoke";
}

LoadedSettings loadSettings(const std::filesystem::path& file) {
    // A settings file holds a few bytes; anything larger is no settings file.
    platform::ReadLimits limits;
    limits.maxBytes = 1 << 20;
    const platform::ReadResult read = platform::readRegularFile(file.string(), limits);
    if (!read) return {Settings{}, true};
    return {parseSettings(read.bytes), false};
}

void saveSettings(const std::filesystem::path& file, const Settings& settings) {
    writeFileReplacing(file.string(), formatSettings(settings));
}

}  // namespace tarvoke::app
