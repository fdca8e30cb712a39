// Benchmarks of screen analysis: capture, the colour search, image matching
// (the isimage rule and LocateImage, with and without --explain) and
// saturation, on a 1920 x 1080 screen.
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

#include "../benchscripts.h"
#include "host/explainer.h"
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

// The benchmark's sub-image made 24 sums brighter (almost there: 3.1 points,
// past tolerance 2), or noise (nowhere near).
platform::PixelGrid missingSub(bool noise) {
    platform::PixelGrid sub = *store().image(1);
    uint32_t seed = 7;
    for (auto& p : sub.pixels) {
        if (noise) p = (seed = seed * 1103515245u + 12345u) >> 8;
        else p = platform::makePixel(std::min(255, platform::redOf(p) + 8), std::min(255, platform::greenOf(p) + 8),
                                     std::min(255, platform::blueOf(p) + 8));
    }
    return sub;
}

// The sub-image over the whole screen, first find: found at (1800, 1000), or
// (absent) the brighter one found nowhere.
void BM_LocateImage(benchmark::State& state) {
    int16_t x = 0, y = 0;
    const bool absent = state.range(0) != 0;
    if (absent) {
        auto grid = store().gridToFill(2);
        *grid = missingSub(false);
        store().place(2, grid);
    }
    const int16_t sub = absent ? 2 : 1;
    store().sums(0);
    store().sums(sub);
    for (auto _ : state) {
        const bool found = screen::locateSubImage(store(), int16_t{0}, sub, 2, {0, 0, kWidth - 1, kHeight - 1}, true,
                                                  {x, y});
        if (found == absent || (!absent && (x != 1800 || y != 1000)))
            state.SkipWithError("the sub-image was not found at (1800, 1000) alone");
    }
}
BENCHMARK(BM_LocateImage)->ArgName("absent")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// What the first picture search after a capture adds: the plane of colour sums.
void BM_SumPlane(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(screen::sumPlaneOf(picture()).sums.data());
}
BENCHMARK(BM_SumPlane)->Unit(benchmark::kMillisecond);

// Pictures that are never written: the explainer is there, and a find never calls it.
class NoFiles : public platform::Pictures {
public:
    bool load(const std::string&, platform::PixelGrid&) override { return false; }
    bool save(const std::string&, const platform::PixelGrid&) override { return false; }
    bool savePng(const std::string&, const platform::PixelGrid&) override { return false; }
};

// The statement that finds, through the engine and the dispatch, without
// and with an explainer in the session (the player's --explain).
void BM_LocateImageStatement(benchmark::State& state) {
    bench::BenchEngine bench;
    for (int slot : {0, 1}) {
        auto grid = bench.session.imageTable.gridToFill(slot);
        *grid = *store().image(slot);
        bench.session.imageTable.place(slot, grid);
    }
    NoFiles files;
    host::Explainer explainer("/nowhere", files, [](std::string_view) {});
    if (state.range(0)) bench.session.explainer = &explainer;
    bench.load("Function(Main);\nLocateImage(r, 0, 1, 0, 0, 1919, 1079, 2);\nEndFunction();\n");
    for (auto _ : state) bench.engine.execute();
    if (bench.engine.getVariableAsString("r") != "True") state.SkipWithError("the sub-image was not found");
}
BENCHMARK(BM_LocateImageStatement)->ArgName("explain")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// What a miss costs with --explain: the search, then the closest place over
// the whole screen, the line and the marked picture (not written).
void BM_ExplainMiss(benchmark::State& state) {
    bench::BenchEngine bench;
    auto grid = bench.session.imageTable.gridToFill(0);
    *grid = *store().image(0);
    bench.session.imageTable.place(0, grid);
    auto sub = bench.session.imageTable.gridToFill(1);
    *sub = missingSub(state.range(0) != 0);
    bench.session.imageTable.place(1, sub);
    NoFiles files;
    std::string line;
    host::Explainer explainer("/nowhere", files, [&line](std::string_view l) { line = l; });
    bench.session.explainer = &explainer;
    bench.load("Function(Main);\nLocateImage(r, 0, 1, 0, 0, 1919, 1079, 2);\nEndFunction();\n");
    for (auto _ : state) bench.engine.execute();
    state.SetLabel(line.substr(line.find("best at"), line.find("; tolerance") - line.find("best at")));
}
BENCHMARK(BM_ExplainMiss)->ArgName("noise")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

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
