// Pause accuracy: how far the real length of Pause(N) is from N, for the
// player's wait (the engine, the host's pause command and the timerfd clock
// on the player's poll loop), the same wait on Qt's loop (the windows), and
// a Qt single-shot timer of the same length, in one run. Prints one
// line per method and length: "METHOD N mean_ms p99_ms max_ms", and the
// drift over a long series of waits: "drift first100_mean_ms last100_mean_ms".
//
// usage: tarvoke_pause_accuracy [RUNS] [SERIES]

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "engine/sc.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/dryrun/dryrun.h"
#include "platform/loop/pollloop.h"
#include "platform/loop/qtloop.h"
#include "platform/x11/clock.h"

namespace {

using namespace tarvoke;
using Clock = std::chrono::steady_clock;

double msSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void report(const char* method, int n, std::vector<double> errors) {
    std::sort(errors.begin(), errors.end());
    double sum = 0;
    for (double e : errors) sum += e;
    const size_t p99 = std::min(errors.size() - 1, static_cast<size_t>(std::ceil(errors.size() * 0.99)) - 1);
    std::printf("%s %d %.4f %.4f %.4f\n", method, n, sum / errors.size(), errors[p99], errors.back());
    std::fflush(stdout);
}

// Runs a loaded one-pause script and returns the absolute error of each run.
std::vector<double> tarvokePauses(engine::SC& engine, int n, int runs) {
    std::string script = "Function(Main);\nPause(" + std::to_string(n) + ");\nEndFunction();\n";
    engine.initialize(script);
    std::vector<double> errors;
    for (int i = 0; i < runs; ++i) {
        const auto start = Clock::now();
        engine.execute();
        errors.push_back(std::fabs(msSince(start) - n));
    }
    return errors;
}

std::vector<double> qtTimers(int n, int runs) {
    std::vector<double> errors;
    for (int i = 0; i < runs; ++i) {
        QEventLoop loop;
        const auto start = Clock::now();
        QTimer::singleShot(n, Qt::PreciseTimer, &loop, &QEventLoop::quit);
        loop.exec();
        errors.push_back(std::fabs(msSince(start) - n));
    }
    return errors;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? std::atoi(argv[1]) : 50;
    const int series = argc > 2 ? std::atoi(argv[2]) : 1000;

    platform::PollLoop pollLoop;
    platform::QtLoop qtLoop;
    platform::x11::RealClock clock(pollLoop), windowsClock(qtLoop);
    platform::dryrun::DryRunInput input([](std::string_view) {});
    host::Session session;
    session.platform.input = &input;
    session.platform.clock = &clock;
    host::HostCommands commands(session);
    engine::SC engine(commands);

    for (int n : {1, 10, 100, 1000}) {
        session.platform.clock = &clock;
        report("tarvoke", n, tarvokePauses(engine, n, runs));
        session.platform.clock = &windowsClock;
        report("tarvoke-windows", n, tarvokePauses(engine, n, runs));
        report("qt", n, qtTimers(n, runs));
    }
    session.platform.clock = &clock;
    // A long series of waits: the error of the last ones against the first.
    const auto errors = tarvokePauses(engine, 10, series);
    const size_t tail = std::min<size_t>(100, errors.size());
    double first = 0, last = 0;
    for (size_t i = 0; i < tail; ++i) {
        first += errors[i];
        last += errors[errors.size() - tail + i];
    }
    std::printf("drift %.4f %.4f\n", first / tail, last / tail);
    return 0;
}
