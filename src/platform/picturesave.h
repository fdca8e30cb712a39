#pragma once
// The one way our picture writers put a finished file on disk.

#include <cstdint>
#include <string>
#include <vector>

namespace tarvoke::platform {

// Writes bytes beside path and renames them over it, so that a failed save
// leaves a file already at path as it was; a new file's bits, also over an
// old picture. Empty bytes are a failure with whyEmpty as the reason. error
// receives the reason of a failure.
bool savePictureBytes(const std::string& path, const std::vector<uint8_t>& bytes, const char* whyEmpty,
                      std::string& error);

}  // namespace tarvoke::platform
