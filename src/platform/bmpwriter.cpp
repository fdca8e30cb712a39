#include "platform/bmpwriter.h"

#include "platform/picturesave.h"

namespace tarvoke::platform {
namespace {

constexpr size_t kHeaderSize = 14 + 40;

void put16(uint8_t* at, uint32_t value) {
    at[0] = value & 0xFF;
    at[1] = (value >> 8) & 0xFF;
}
void put32(uint8_t* at, uint32_t value) {
    put16(at, value & 0xFFFF);
    put16(at + 2, value >> 16);
}

}  // namespace

std::vector<uint8_t> encodeBmp(const PixelGrid& grid) {
    if (grid.empty()) return {};
    const uint64_t rowBytes = (static_cast<uint64_t>(grid.width) * 3 + 3) & ~uint64_t{3};
    const uint64_t imageBytes = rowBytes * static_cast<uint64_t>(grid.height);
    if (imageBytes + kHeaderSize > 0x7FFFFFFFu) return {};

    std::vector<uint8_t> file(kHeaderSize + imageBytes, 0);
    uint8_t* h = file.data();
    h[0] = 'B';
    h[1] = 'M';
    put32(h + 2, static_cast<uint32_t>(file.size()));
    put32(h + 10, kHeaderSize);
    put32(h + 14, 40);
    put32(h + 18, static_cast<uint32_t>(grid.width));
    put32(h + 22, static_cast<uint32_t>(grid.height));  // positive: the bottom row comes first
    put16(h + 26, 1);
    put16(h + 28, 24);
    put32(h + 34, static_cast<uint32_t>(imageBytes));
    put32(h + 38, 3780);  // 96 dots per inch
    put32(h + 42, 3780);

    for (int32_t y = 0; y < grid.height; ++y) {
        uint8_t* out = h + kHeaderSize + rowBytes * static_cast<uint64_t>(grid.height - 1 - y);
        const uint32_t* in = grid.row(y);
        for (int32_t x = 0; x < grid.width; ++x, out += 3) {
            out[0] = blueOf(in[x]);
            out[1] = greenOf(in[x]);
            out[2] = redOf(in[x]);
        }
    }
    return file;
}

bool saveBmpFile(const std::string& path, const PixelGrid& grid, std::string& error) {
    const char* whyEmpty =
        grid.empty() ? "there is no picture to save" : "the picture is too large for a bitmap file";
    return savePictureBytes(path, encodeBmp(grid), whyEmpty, error);
}

}  // namespace tarvoke::platform
