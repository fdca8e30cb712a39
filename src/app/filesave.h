#pragma once
// How the windows save scripts and settings: through platform::saveFile,
// replacing the old file and keeping its permission bits, so that a failure
// never loses it. The message boxes want only the reason.

#include <optional>
#include <string>
#include <string_view>

#include "platform/filesave.h"

namespace tarvoke::app {

// The reason of the failure ("Permission denied"), or nothing on success.
inline std::optional<std::string> writeFileReplacing(const std::string& path, std::string_view bytes) {
    const platform::SaveResult saved = platform::saveFile(path, bytes);
    if (saved) return std::nullopt;
    return saved.reason();
}

}  // namespace tarvoke::app
