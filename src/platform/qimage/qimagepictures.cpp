#include "platform/qimage/qimagepictures.h"

#include <QImage>
#include <QImageReader>
#include <QByteArray>
#include <QBuffer>
#include <QString>
#include <cstring>

#include "platform/fileread.h"
#include "platform/bmpwriter.h"

namespace tarvoke::platform::qimage {

bool QImagePictures::load(const std::string& path, PixelGrid& grid) {
    grid = {};
    // Read through the one reader that refuses what is no regular file
    // (a FIFO would block the program for good).
    const ReadResult read = readRegularFile(path, ReadLimits{kMaxPictureBytes, {}});
    if (!read) return false;
    QByteArray bytes = QByteArray::fromRawData(read.bytes.data(), static_cast<qsizetype>(read.bytes.size()));
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    reader.setAutoTransform(false);
    QImage image = reader.read();
    if (image.isNull()) return false;
    // RGB32 stores 0xffRRGGBB words: blue in byte 0, as the grid wants.
    image = image.convertToFormat(QImage::Format_RGB32);
    if (image.isNull()) return false;
    grid.resize(image.width(), image.height());
    for (int y = 0; y < image.height(); ++y) {
        const auto* in = reinterpret_cast<const uint32_t*>(image.constScanLine(y));
        uint32_t* out = grid.row(y);
        for (int x = 0; x < image.width(); ++x) out[x] = in[x] & 0x00FFFFFFu;
    }
    return true;
}

bool QImagePictures::save(const std::string& path, const PixelGrid& grid) {
    m_lastError.clear();
    return saveBmpFile(path, grid, m_lastError);
}

}  // namespace tarvoke::platform::qimage
