#include "screen/imagefiles.h"

#include <algorithm>

#include "screen/imagename.h"

namespace tarvoke::screen {

void CaptureScreen(ImageStore& store, platform::ScreenCapture& screen, const std::string& sImage) {
    const bool temp = sImage == "sstemp";
    std::optional<int16_t> index;
    if (!temp && !(index = imageIndex(sImage))) return;
    store.clearWorkSurface();
    ImageStore::GridPtr grid = temp ? store.tempCaptureToFill() : store.gridToFill(*index);
    if (!screen.capture(*grid) || grid->empty()) grid.reset();
    if (temp) store.placeTempCapture(std::move(grid));
    else store.place(*index, std::move(grid));
}

void LoadImage(ImageStore& store, platform::Pictures& pictures, const std::string& sImage, const std::string& sPath) {
    const auto index = imageIndex(sImage);
    if (!index) return;
    store.clearWorkSurface();
    auto grid = std::make_shared<platform::PixelGrid>();
    if (!pictures.load(sPath, *grid) || grid->empty()) grid.reset();
    store.place(*index, std::move(grid));
}

void SaveImage(ImageStore& store, platform::Pictures& pictures, const std::string& sImage, const std::string& sPath) {
    const auto index = imageIndex(sImage);
    if (!index) return;
    store.showOnWorkSurface(*index);
    static const platform::PixelGrid kNothing;
    const platform::PixelGrid* surface = store.workSurface();
    pictures.save(sPath, surface ? *surface : kNothing);
}

std::string slashPath(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

std::string loadPath(const std::string& sScriptFolder, const std::string& path) {
    std::string relative = slashPath(path);
    if (!relative.empty() && relative[0] == '/') relative.erase(0, 1);
    return sScriptFolder + relative;
}

}  // namespace tarvoke::screen
