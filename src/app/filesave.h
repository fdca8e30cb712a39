#pragma once
// Writing a file so that a failure never loses the old one: the new bytes go
// to a temporary file in the same folder, which is then renamed over.

#include <optional>
#include <string>
#include <string_view>

namespace tarvoke::app {

// The reason of the failure ("Permission denied"), or nothing on success.
std::optional<std::string> writeFileReplacing(const std::string& path, std::string_view bytes);

}  // namespace tarvoke::app
