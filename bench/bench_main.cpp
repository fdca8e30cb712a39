// The benchmarks' main: the application object is the player's, so that the
// yield benchmarks run its real event loop. With --glib it is Qt's default
// (GLib) dispatcher instead, for comparison.

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <cstring>
#include <memory>

#include "eventloop.h"

int main(int argc, char** argv) {
    const bool glib = argc > 1 && std::strcmp(argv[argc - 1], "--glib") == 0;
    if (glib) --argc;
    std::unique_ptr<QCoreApplication> app;
    if (glib) {
        app = std::make_unique<QCoreApplication>(argc, argv);
    } else {
        const tarvoke::player::UnixEventDispatcherChoice dispatcher;
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
