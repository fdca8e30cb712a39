#include <cstddef>  // size_t in the pixel grid

#include "platform/x11/xshmcapture.h"

#include <X11/Xutil.h>
#include <X11/extensions/XShm.h>
#include <sys/ipc.h>
#include <sys/shm.h>

#include <cstring>

namespace tarvoke::platform::x11 {

struct XShmCapture::Segment {
    XShmSegmentInfo info{};
    bool attached = false;
};

namespace {

// How far a colour mask lies from bit 0 and how many bits it has.
struct Channel {
    int shift = 0;
    int bits = 0;
    explicit Channel(unsigned long mask) {
        if (!mask) return;
        while (!(mask & 1)) mask >>= 1, ++shift;
        while (mask & 1) mask >>= 1, ++bits;
    }
    uint32_t byteOf(unsigned long pixel) const {
        if (bits == 0) return 0;
        const unsigned long value = (pixel >> shift) & ((1ul << bits) - 1);
        return bits >= 8 ? static_cast<uint32_t>(value >> (bits - 8))
                         : static_cast<uint32_t>(value * 255 / ((1ul << bits) - 1));
    }
};

bool isNativeTrueColour(const XImage& image) {
    const bool littleEndianHost = [] {
        const uint16_t one = 1;
        uint8_t first;
        std::memcpy(&first, &one, 1);
        return first == 1;
    }();
    return image.bits_per_pixel == 32 && image.red_mask == 0xFF0000 && image.green_mask == 0xFF00 &&
           image.blue_mask == 0xFF && (image.byte_order == LSBFirst) == littleEndianHost;
}

// The image's pixels into grid (already of the image's size). The common
// 24-bit true-colour layout is copied a row at a time; anything else goes
// through its colour masks.
void convert(const XImage& image, PixelGrid& grid) {
    if (isNativeTrueColour(image)) {
        for (int32_t y = 0; y < grid.height; ++y) {
            const auto* in = reinterpret_cast<const uint32_t*>(image.data + static_cast<size_t>(y) * image.bytes_per_line);
            uint32_t* out = grid.row(y);
            for (int32_t x = 0; x < grid.width; ++x) out[x] = in[x] & 0x00FFFFFFu;
        }
        return;
    }
    const Channel red(image.red_mask), green(image.green_mask), blue(image.blue_mask);
    auto* source = const_cast<XImage*>(&image);
    for (int32_t y = 0; y < grid.height; ++y) {
        uint32_t* out = grid.row(y);
        for (int32_t x = 0; x < grid.width; ++x) {
            const unsigned long p = XGetPixel(source, x, y);
            out[x] = (red.byteOf(p) << 16) | (green.byteOf(p) << 8) | blue.byteOf(p);
        }
    }
}

}  // namespace

XShmCapture::~XShmCapture() { detach(); }

bool XShmCapture::capture(PixelGrid& grid, int width, int height) {
    if (width <= 0 || height <= 0) return false;
    if (!m_unavailable && attach(width, height) && captureShared(grid)) return true;
    return capturePlain(grid, width, height);
}

bool XShmCapture::attach(int width, int height) {
    if (m_image && m_image->width == width && m_image->height == height) return true;
    detach();
    Display* display = m_x.display();
    if (!XShmQueryExtension(display)) {
        m_unavailable = true;
        return false;
    }
    const int screen = DefaultScreen(display);
    m_segment = new Segment;
    m_image = XShmCreateImage(display, DefaultVisual(display, screen), static_cast<unsigned>(DefaultDepth(display, screen)),
                              ZPixmap, nullptr, &m_segment->info, static_cast<unsigned>(width),
                              static_cast<unsigned>(height));
    if (!m_image) {
        delete m_segment;
        m_segment = nullptr;
        m_unavailable = true;
        return false;
    }
    XShmSegmentInfo& info = m_segment->info;
    info.shmid = shmget(IPC_PRIVATE, static_cast<size_t>(m_image->bytes_per_line) * m_image->height, IPC_CREAT | 0600);
    info.shmaddr = info.shmid < 0 ? reinterpret_cast<char*>(-1) : static_cast<char*>(shmat(info.shmid, nullptr, 0));
    if (info.shmaddr == reinterpret_cast<char*>(-1)) {
        if (info.shmid >= 0) shmctl(info.shmid, IPC_RMID, nullptr);
        info.shmaddr = nullptr;
        detach();
        m_unavailable = true;
        return false;
    }
    m_image->data = info.shmaddr;
    info.readOnly = False;
    // A server on another machine refuses the attach; wait for its answer.
    const bool attached = m_x.checked([&] {
        XShmAttach(display, &info);
        XSync(display, False);
    });
    // Marked for removal now: it goes away when both sides have detached,
    // even if this process ends without cleaning up.
    shmctl(info.shmid, IPC_RMID, nullptr);
    m_segment->attached = attached;
    if (!attached) {
        detach();
        m_unavailable = true;
        return false;
    }
    return true;
}

void XShmCapture::detach() {
    if (m_segment) {
        XShmSegmentInfo& info = m_segment->info;
        if (info.shmaddr) {
            if (m_segment->attached) m_x.checked([&] {
                XShmDetach(m_x.display(), &info);
                XSync(m_x.display(), False);
            });
            shmdt(info.shmaddr);
        }
        delete m_segment;
        m_segment = nullptr;
    }
    if (m_image) {
        m_image->data = nullptr;  // the segment, not Xlib, owned the pixels
        XDestroyImage(m_image);
        m_image = nullptr;
    }
}

bool XShmCapture::captureShared(PixelGrid& grid) {
    bool got = false;
    if (!m_x.checked([&] { got = XShmGetImage(m_x.display(), m_x.root(), m_image, 0, 0, AllPlanes); }) || !got)
        return false;
    if (grid.width != m_image->width || grid.height != m_image->height) grid.resize(m_image->width, m_image->height);
    convert(*m_image, grid);
    return true;
}

bool XShmCapture::capturePlain(PixelGrid& grid, int width, int height) {
    XImage* image = nullptr;
    m_x.checked([&] {
        image = XGetImage(m_x.display(), m_x.root(), 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height),
                          AllPlanes, ZPixmap);
    });
    if (!image) return false;
    if (grid.width != width || grid.height != height) grid.resize(width, height);
    convert(*image, grid);
    XDestroyImage(image);
    return true;
}

}  // namespace tarvoke::platform::x11
