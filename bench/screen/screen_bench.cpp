// Benchmarks of screen analysis: capture, the colour search, image matching
// and saturation, on a 1920 x 1080 screen.
//
// --write-pictures DIR writes the picture and the 48 x 48 sub-image as PNG
// files, for the peers that bench/screen/run.sh times on the same pictures.

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QImage>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "picture.h"
#include "platform/loop/pollloop.h"
#include "platform/x11/x11platform.h"
#include "screen/imagestore.h"
#include "screen/routines.h"

namespace {

using namespace tarvoke;

constexpr int kWidth = 1920, kHeight = 1080;

const platform::PixelGrid& picture() {
    static const platform::PixelGrid grid = bench::desktopPicture(kWidth, kHeight);
    return grid;
}

screen::ImageStore& store() {
    static screen::ImageStore* s = [] {
        auto* store = new screen::ImageStore;
        auto grid = store->gridToFill(0);
        *grid = picture();
        store->place(0, grid);
        auto sub = store->gridToFill(1);
        *sub = bench::cut(picture(), 1800, 1000, 48, 48);
        store->place(1, sub);
        return store;
    }();
    return *s;
}

void BM_CaptureXShm(benchmark::State& state) {
    platform::PollLoop loop;
    auto x11 = platform::x11::X11Platform::open(loop);
    if (!x11) {
        state.SkipWithError("no X display");
        return;
    }
    platform::ScreenCapture* capture = x11->platform(nullptr).screen;
    platform::PixelGrid grid;
    capture->capture(grid);  // sets up the shared segment once
    for (auto _ : state) {
        capture->capture(grid);
        benchmark::DoNotOptimize(grid.pixels.data());
    }
    state.counters["width"] = grid.width;
    state.counters["height"] = grid.height;
}
BENCHMARK(BM_CaptureXShm)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_MoveMouseToColorRangeAbsent(benchmark::State& state) {
    screen::ColorRanges ranges;
    ranges.colorRangeMin[3] = ranges.colorRangeMax[3] = {1, 2, 3};  // red 1, blue 2, green 3: nowhere in the picture
    for (auto _ : state) {
        auto found = screen::firstInColorRange(store(), ranges, int16_t{0}, 3);
        if (found) state.SkipWithError("the colour is in the picture");
        benchmark::DoNotOptimize(found);
    }
    state.counters["ns_per_pixel"] =
        benchmark::Counter(double(kWidth) * kHeight, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_MoveMouseToColorRangeAbsent)->Unit(benchmark::kMicrosecond);

void BM_MemchrSameBytes(benchmark::State& state) {
    // The picture's 8 MB with one byte value taken out, searched for that value.
    const auto* pixels = reinterpret_cast<const unsigned char*>(picture().pixels.data());
    std::vector<unsigned char> bytes(pixels, pixels + picture().pixels.size() * 4);
    for (auto& b : bytes)
        if (b == 0xAB) b = 0xAC;
    for (auto _ : state) benchmark::DoNotOptimize(std::memchr(bytes.data(), 0xAB, bytes.size()));
    state.counters["ns_per_pixel"] =
        benchmark::Counter(double(kWidth) * kHeight, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_MemchrSameBytes)->Unit(benchmark::kMicrosecond);

void BM_IsImageInAreaEx(benchmark::State& state) {
    int16_t x = 0, y = 0;
    store().sums(0);  // the brightness planes are kept per slot
    store().sums(1);
    for (auto _ : state) {
        const bool found = screen::findSubImage(store(), int16_t{0}, int16_t{1}, 2, {0, 0, 1846, 1046}, true, {x, y});
        if (!found || x != 1801 || y != 1001) state.SkipWithError("the sub-image was not found at (1801, 1001)");
    }
}
BENCHMARK(BM_IsImageInAreaEx)->Unit(benchmark::kMillisecond);

void BM_GetSaturationInWholeScreen(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(screen::getSaturation(store(), int16_t{0}, {0, 0, kWidth - 1, kHeight - 1}));
}
BENCHMARK(BM_GetSaturationInWholeScreen)->Unit(benchmark::kMillisecond);

bool writePictures(const std::string& folder) {
    auto save = [&](const platform::PixelGrid& grid, const std::string& name) {
        QImage image(reinterpret_cast<const uchar*>(grid.pixels.data()), grid.width, grid.height, grid.width * 4,
                     QImage::Format_RGB32);
        return image.save(QString::fromStdString(folder + "/" + name), "PNG");
    };
    return save(picture(), "screen.png") && save(bench::cut(picture(), 1800, 1000, 48, 48), "sub.png");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--write-pictures") == 0) return writePictures(argv[2]) ? 0 : 1;
    QCoreApplication app(argc, argv);  // the X11 platform watches its connection through Qt
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
