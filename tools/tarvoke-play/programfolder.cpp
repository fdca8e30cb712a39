#include "programfolder.h"

#include <cerrno>
#include <filesystem>

namespace tarvoke::player {

std::string programFolder() {
    std::error_code error;
    const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error || !executable.has_parent_path()) return ".";
    return executable.parent_path().string();
}

}  // namespace tarvoke::player

namespace tarvoke::player {

std::string programPath() {
    std::error_code error;
    const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : executable.string();
}

const char* programName() { return program_invocation_short_name; }

}  // namespace tarvoke::player
