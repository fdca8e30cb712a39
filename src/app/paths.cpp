#include "app/paths.h"

#include <algorithm>

namespace tarvoke::app {

bool isValidPath(std::string& path) {
    std::erase_if(path, [](char c) { return c == '\t' || c == '\r' || c == '\n'; });
    if (path.empty() || path == " " || path == ".") return false;
    if (path.find('/') == std::string::npos) return false;
    return path.find('\0') == std::string::npos;
}

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string fileNameOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace tarvoke::app
