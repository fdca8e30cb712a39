#include "programfolder.h"

#include <filesystem>

namespace tarvoke::player {

std::string programFolder() {
    std::error_code error;
    const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error || !executable.has_parent_path()) return ".";
    return executable.parent_path().string();
}

}  // namespace tarvoke::player
