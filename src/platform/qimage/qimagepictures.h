#pragma once
// Picture files read with QImage (BMP, PNG, JPEG, GIF and whatever image
// plugins are installed) and written by our own bitmap writer.

#include "platform/pictures.h"

namespace tarvoke::platform::qimage {

class QImagePictures : public Pictures {
public:
    bool load(const std::string& path, PixelGrid& grid) override;
    bool save(const std::string& path, const PixelGrid& grid) override;
    // Why the last save failed.
    const std::string& lastError() const { return m_lastError; }

private:
    std::string m_lastError;
};

}  // namespace tarvoke::platform::qimage
