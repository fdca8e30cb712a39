#include "screen/imagefiles.h"

#include <algorithm>
#include <optional>


namespace tarvoke::screen {

namespace {

// slot empty: the private capture.
void capture(ImageStore& store, platform::ScreenCapture& screen, std::optional<int16_t> slot) {
    store.clearWorkSurface();
    ImageStore::GridPtr grid = slot ? store.gridToFill(*slot) : store.tempCaptureToFill();
    if (!screen.capture(*grid) || grid->empty()) grid.reset();
    if (slot) store.place(*slot, std::move(grid));
    else store.placeTempCapture(std::move(grid));
}

}  // namespace

void captureScreen(ImageStore& store, platform::ScreenCapture& screen, int16_t slot) { capture(store, screen, slot); }

void captureTemp(ImageStore& store, platform::ScreenCapture& screen) { capture(store, screen, std::nullopt); }

void loadImage(ImageStore& store, platform::Pictures& pictures, int16_t slot, const std::string& path) {
    store.clearWorkSurface();
    auto grid = std::make_shared<platform::PixelGrid>();
    if (!pictures.load(path, *grid) || grid->empty()) grid.reset();
    store.place(slot, std::move(grid));
}

void saveImage(ImageStore& store, platform::Pictures& pictures, int16_t slot, const std::string& path) {
    store.showOnWorkSurface(slot);
    static const platform::PixelGrid kNothing;
    const platform::PixelGrid* surface = store.workSurface();
    pictures.save(path, surface ? *surface : kNothing);
}

std::string slashPath(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

std::string loadPath(const std::string& scriptFolder, const std::string& path) {
    std::string relative = slashPath(path);
    if (!relative.empty() && relative[0] == '/') relative.erase(0, 1);
    return scriptFolder + relative;
}

}  // namespace tarvoke::screen
