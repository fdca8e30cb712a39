#pragma once
// The script checker: what the load would silently drop, skip or never
// match, found by the load's own passes and pointed at in the file as the
// user wrote it. It changes nothing about how a script loads or runs.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarvoke::engine {

struct Finding {
    int line;    // 1-based
    int column;  // 1-based, in bytes (a tab is one), in the file as written
    std::string message;
};

// The width and height of the picture a loadimage path names (the path as
// the script resolves it, before the script folder is put in front); empty
// when it cannot be read.
using PictureSize = std::function<std::optional<std::pair<int, int>>(const std::string& path)>;

// In file order.
std::vector<Finding> checkScript(std::string_view fileText);
// The same, knowing the sizes of pictures that literal loadimage paths name.
std::vector<Finding> checkScript(std::string_view fileText, const PictureSize& pictureSize);

}  // namespace tarvoke::engine
