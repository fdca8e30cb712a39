#pragma once
// Picture files for the player: bitmaps are written by the core's own
// writer, and pictures are read by the module tarvoke-pictures.so beside the
// player, loaded at the first read, so that a run without pictures starts
// without Qt.

#include <functional>
#include <memory>
#include <string>

#include "platform/pictures.h"

namespace tarvoke::player {

class PictureModule : public platform::Pictures {
public:
    // modulePath names the module when it is first needed; by default the
    // file beside the program.
    explicit PictureModule(std::function<std::string()> modulePath = {}) : m_modulePath(std::move(modulePath)) {}
    ~PictureModule() override;
    // When the module cannot be loaded, says so once on standard error, and
    // every read fails as a missing picture does.
    bool load(const std::string& path, platform::PixelGrid& grid) override;
    bool save(const std::string& path, const platform::PixelGrid& grid) override;

private:
    platform::Pictures* reader();

    std::function<std::string()> m_modulePath;
    void* m_handle = nullptr;
    std::unique_ptr<platform::Pictures> m_reader;
    bool m_tried = false;
};

}  // namespace tarvoke::player
