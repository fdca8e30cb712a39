#include "screen/imagestore.h"

namespace tarvoke::screen {

SumPlane sumPlaneOf(const platform::PixelGrid& grid) {
    SumPlane plane;
    plane.width = grid.width;
    plane.height = grid.height;
    plane.sums.resize(grid.pixels.size());
    const uint32_t* in = grid.pixels.data();
    uint16_t* out = plane.sums.data();
    for (size_t i = 0, n = grid.pixels.size(); i < n; ++i) {
        const uint32_t p = in[i];
        out[i] = static_cast<uint16_t>((p & 0xFF) + ((p >> 8) & 0xFF) + ((p >> 16) & 0xFF));
    }
    return plane;
}

const platform::PixelGrid* ImageStore::image(int index) const {
    if (!isSlot(index)) return nullptr;
    const platform::PixelGrid* grid = m_slots[index].grid.get();
    return grid && !grid->empty() ? grid : nullptr;
}

const SumPlane* ImageStore::sums(int index) {
    const platform::PixelGrid* grid = image(index);
    if (!grid) return nullptr;
    Slot& slot = m_slots[index];
    if (!slot.sums) slot.sums = std::make_unique<SumPlane>(sumPlaneOf(*grid));
    return slot.sums.get();
}

ImageStore::GridPtr ImageStore::reusable(GridPtr& held) {
    if (held && held.use_count() == 1) return std::move(held);
    return std::make_shared<platform::PixelGrid>();
}

ImageStore::GridPtr ImageStore::gridToFill(int index) {
    if (!isSlot(index)) return std::make_shared<platform::PixelGrid>();
    Slot& slot = m_slots[index];
    slot.sums.reset();
    return reusable(slot.grid);
}

void ImageStore::place(int index, GridPtr grid) {
    m_workSurface = grid;
    if (!isSlot(index)) return;
    m_slots[index].grid = std::move(grid);
    m_slots[index].sums.reset();
}

ImageStore::GridPtr ImageStore::tempCaptureToFill() { return reusable(m_tempCapture); }

void ImageStore::placeTempCapture(GridPtr grid) {
    m_workSurface = grid;
    m_tempCapture = grid ? std::move(grid) : std::make_shared<platform::PixelGrid>();
}

void ImageStore::showOnWorkSurface(int index) {
    if (image(index)) m_workSurface = m_slots[index].grid;
}

}  // namespace tarvoke::screen
