#pragma once
// The image store: 51 numbered slots of pixel grids, the recorder's private
// capture "sstemp", and the work surface every capture, load and save passes
// through. It lives as long as the process: runs and loads clear nothing.

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/pixelgrid.h"

namespace tarvoke::screen {

// Per pixel, red + green + blue (0..765), row-major like its grid. Brightness
// is a function of this sum alone, so the image matcher compares sums.
struct SumPlane {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint16_t> sums;
    const uint16_t* row(int32_t y) const { return sums.data() + static_cast<size_t>(y) * width; }
};

SumPlane sumPlaneOf(const platform::PixelGrid& grid);

class ImageStore {
public:
    static constexpr int kSlotCount = 51;
    using GridPtr = std::shared_ptr<platform::PixelGrid>;

    static bool isSlot(int index) { return index >= 0 && index < kSlotCount; }

    // The grid of a slot; null when the index is outside the store or the slot is empty.
    const platform::PixelGrid* image(int index) const;
    // The sums of a slot's grid, made on first use and kept until the slot changes.
    const SumPlane* sums(int index);

    // A grid to fill and then hand to place(): the slot's own buffer when
    // nothing else shares it (so repeated captures reuse it), else a new one.
    GridPtr gridToFill(int index);
    // Puts grid into slot index (dropped when index is no slot) and onto the
    // work surface. A null grid empties the slot.
    void place(int index, GridPtr grid);

    const platform::PixelGrid& tempCapture() const { return *m_tempCapture; }
    GridPtr tempCaptureToFill();
    void placeTempCapture(GridPtr grid);

    // The work surface holds the last grid that passed through; cleared before
    // a capture or a load, it is what a save of an empty slot writes.
    const platform::PixelGrid* workSurface() const { return m_workSurface.get(); }
    void clearWorkSurface() { m_workSurface.reset(); }
    void showOnWorkSurface(int index);

private:
    struct Slot {
        GridPtr grid;
        std::unique_ptr<SumPlane> sums;
    };
    static GridPtr reusable(GridPtr& held);

    std::array<Slot, kSlotCount> m_slots;
    GridPtr m_tempCapture = std::make_shared<platform::PixelGrid>();
    std::shared_ptr<const platform::PixelGrid> m_workSurface;
};

}  // namespace tarvoke::screen
