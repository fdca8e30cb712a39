#pragma once
// Picture files for logic tests: kept in memory by path, so that tests can
// put pictures where scripts look for them and read back what they saved.

#include <map>
#include <string>

#include "platform/pictures.h"

namespace tarvoke::platform::fake {

class FakePictures : public Pictures {
public:
    bool load(const std::string& path, PixelGrid& grid) override {
        const auto found = files.find(path);
        if (found == files.end()) {
            grid = {};
            return false;
        }
        grid = found->second;
        return true;
    }
    bool save(const std::string& path, const PixelGrid& grid) override {
        if (grid.empty() || unwritable.count(path)) return false;
        files[path] = grid;
        return true;
    }
    bool savePng(const std::string& path, const PixelGrid& grid) override { return save(path, grid); }

    std::map<std::string, PixelGrid> files;
    std::map<std::string, bool> unwritable;
};

}  // namespace tarvoke::platform::fake
