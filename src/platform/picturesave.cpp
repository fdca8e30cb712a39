#include "platform/picturesave.h"

#include <string_view>

#include "platform/filesave.h"

namespace tarvoke::platform {

bool savePictureBytes(const std::string& path, const std::vector<uint8_t>& bytes, const char* whyEmpty,
                      std::string& error) {
    if (bytes.empty()) {
        error = whyEmpty;
        return false;
    }
    const SaveResult saved = saveFile(
        path, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
        {.mode = newFileMode()});
    if (!saved) {
        error = saved.reason();
        return false;
    }
    return true;
}

}  // namespace tarvoke::platform
