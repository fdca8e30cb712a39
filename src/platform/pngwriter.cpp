#include "platform/pngwriter.h"

#include <zlib.h>

#include "platform/pictures.h"
#include "platform/picturesave.h"

namespace tarvoke::platform {
namespace {

void put32(std::vector<uint8_t>& out, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<uint8_t>(value >> shift));
}

void chunk(std::vector<uint8_t>& out, const char* type, const std::vector<uint8_t>& data) {
    put32(out, static_cast<uint32_t>(data.size()));
    const size_t start = out.size();
    out.insert(out.end(), type, type + 4);
    out.insert(out.end(), data.begin(), data.end());
    // The checksum covers the type and the data, not the length.
    put32(out, static_cast<uint32_t>(crc32(0, out.data() + start, static_cast<uInt>(out.size() - start))));
}

}  // namespace

std::vector<uint8_t> encodePng(const PixelGrid& grid) {
    if (grid.empty()) return {};
    // Each row: filter type 0 (none), then red, green, blue.
    const size_t rowBytes = 1 + static_cast<size_t>(grid.width) * 3;
    std::vector<uint8_t> raw(rowBytes * static_cast<size_t>(grid.height));
    for (int32_t y = 0; y < grid.height; ++y) {
        uint8_t* out = raw.data() + rowBytes * static_cast<size_t>(y);
        *out++ = 0;
        const uint32_t* in = grid.row(y);
        for (int32_t x = 0; x < grid.width; ++x, out += 3) {
            out[0] = redOf(in[x]);
            out[1] = greenOf(in[x]);
            out[2] = blueOf(in[x]);
        }
    }
    uLongf packedSize = compressBound(static_cast<uLong>(raw.size()));
    std::vector<uint8_t> packed(packedSize);
    // Level 1: a screen of flat colour packs nearly as well as at 9, many times faster.
    if (compress2(packed.data(), &packedSize, raw.data(), static_cast<uLong>(raw.size()), 1) != Z_OK) return {};
    packed.resize(packedSize);

    std::vector<uint8_t> header;
    put32(header, static_cast<uint32_t>(grid.width));
    put32(header, static_cast<uint32_t>(grid.height));
    header.insert(header.end(), {8, 2, 0, 0, 0});  // 8 bits, RGB, deflate, no filter choice, no interlace

    std::vector<uint8_t> file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    chunk(file, "IHDR", header);
    chunk(file, "IDAT", packed);
    chunk(file, "IEND", {});
    return file;
}

bool savePngFile(const std::string& path, const PixelGrid& grid, std::string& error) {
    const char* whyEmpty = grid.empty() ? "there is no picture to save" : "the picture could not be compressed";
    return savePictureBytes(path, encodePng(grid), whyEmpty, error);
}

bool Pictures::savePng(const std::string& path, const PixelGrid& grid) {
    std::string error;
    return savePngFile(path, grid, error);
}

}  // namespace tarvoke::platform
