#pragma once
// The state of the host commands that outlives a load and a run, held in one
// object handed to the engine and the commands (no globals, so tests stay
// apart).

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/platform.h"
#include "screen/colorrange.h"
#include "screen/imagestore.h"

namespace tarvoke::host {

class Explainer;

struct Session {
    platform::Platform platform;

    platform::WindowId targetWindow = 0;
    double pauseFactor = 1.0;
    std::string pausePercent;
    bool ignorePauses = false;
    bool repeat = true;
    bool firstFind = true;
    int16_t lastX = 0;
    int16_t lastY = 0;
    platform::Point cursor;
    // A plain click notes where the cursor was for "lx" and "ly" without
    // waiting for the display's answer. Whoever reads or writes the two
    // settles it first.
    std::unique_ptr<platform::PendingPoint> pendingClickPoint;
    void settleLastClick();
    std::string scriptFolder;

    // Set by the player's --percent: the pause factor is fixed and
    // SetPausePercent statements are passed over.
    std::optional<double> fixedPauseFactor;

    // The stopwatch's start, on the clock's monotonic milliseconds.
    int64_t runClockStart = 0;
    // Called for each SetPausePercent of a White Debug mode run, whose window
    // counts them.
    std::function<void()> onWhiteDebugPercent;

    // Whether a stop is on its way (a signal, Ctrl+0) that the event loop has
    // not handled yet. Long steps (huge texts, image searches, the dump)
    // look at it between pieces of work and give up, so that the stop ends
    // the run at once; the loop then ends it at the next yield.
    std::function<bool()> stopRequested;
    bool stopPending() const { return stopRequested && stopRequested(); }
    // Set where stopRequested saw Ctrl+0 held: the next hotkey poll stops the
    // run even when the keys are up again by then.
    bool stopKeysSeen = false;

    // The screen module: the image store and the colour ranges.
    screen::ImageStore imageTable;
    screen::ColorRanges colorRanges;
    // The player's --explain: told of each search that found nothing.
    Explainer* explainer = nullptr;
};

}  // namespace tarvoke::host
