#pragma once
// settings.dat: five flags as ten bytes of text, "1," or "0," each, no line
// break. Anything but an exact "1" reads as false, so a damaged file does no
// harm.

#include <cstdint>
#include <filesystem>
#include <string>

namespace tarvoke::app {

struct Settings {
    bool repeat = true;
    bool mouseMove = true;
    bool extendedClicks = true;
    bool ignorePauses = false;
    bool basicMode = true;
    bool operator==(const Settings&) const = default;
};

// The text between comma index-1 and comma index (index from 1), or the rest
// of the text when the last comma is missing; empty when there is no field.
std::string settingsField(const std::string& text, int16_t index);

Settings parseSettings(const std::string& text);
std::string formatSettings(const Settings& settings);

// Where settings.dat lives: $TARVOKE_SETTINGS_DIR when set, else the program
// folder when it is writable, else $XDG_CONFIG_HOME/tarvoke (~/.config/tarvoke).
std::filesystem::path settingsFolder(const std::filesystem::path& programFolder);

struct LoadedSettings {
    Settings settings;
    bool firstRun = false;
};

// No file: the defaults and firstRun.
LoadedSettings loadSettings(const std::filesystem::path& file);
// Writes beside and renames over; failures are passed over (the next start
// finds the old file or none).
void saveSettings(const std::filesystem::path& file, const Settings& settings);

}  // namespace tarvoke::app
