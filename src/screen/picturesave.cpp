#include "screen/picturesave.h"

#include <string_view>

#include "platform/filesave.h"

namespace tarvoke::screen {

bool savePictureBytes(const std::string& path, const std::vector<uint8_t>& bytes, const char* whyEmpty,
                      std::string& error) {
    if (bytes.empty()) {
        error = whyEmpty;
        return false;
    }
    const platform::SaveResult saved = platform::saveFile(
        path, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
        {.mode = platform::newFileMode()});
    if (!saved) {
        error = saved.reason();
        return false;
    }
    return true;
}

}  // namespace tarvoke::screen
