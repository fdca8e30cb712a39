#include "host/pauses.h"

#include "engine/numeric.h"
#include "host/commandcontext.h"
#include "host/timing.h"

namespace tarvoke::host {
namespace {

// The guard of every pause: the unscaled value rounded to 32 bits must be
// above 0, so Pause(0.4) waits nothing although its scaled length is not 0.
bool passesGuard(const std::string& text) {
    const auto value = engine::TextToInt32(text);
    return value && *value > 0;
}

std::optional<int32_t> scaled(const Session& session, const std::string& text) {
    const auto value = engine::TextToDouble(text);
    if (!value) return std::nullopt;
    return engine::roundToInt32(*value * session.dblPauseFactor);
}

}  // namespace

void forEachPausePiece(int32_t ms, const std::function<bool(int32_t)>& wait) {
    if (ms <= kPausePiece) {
        wait(std::max(ms, 0));
        return;
    }
    for (int64_t done = 0; done <= ms; done += kPausePiece) {
        const int64_t rest = ms - done;
        if (!wait(static_cast<int32_t>(std::min<int64_t>(rest, kPausePiece)))) return;
    }
}

void pause(engine::SC& engine, int32_t lngLine) {
    Session& session = engine.session();
    if (session.bIgnorePauses) return;
    const std::string text = CommandContext(engine, lngLine).text(1);
    if (!passesGuard(text)) return;
    const int32_t ms = scaled(session, text).value_or(0);
    // A stopped run waits out no more pieces; the piece in hand was cut short.
    forEachPausePiece(ms, [&](int32_t piece) {
        WaitMilliseconds(session, piece);
        return engine.running();
    });
}

void pauseUnits(engine::SC& engine, int32_t lngLine, PauseUnit unit) {
    Session& session = engine.session();
    if (session.bIgnorePauses) return;
    const std::string text = CommandContext(engine, lngLine).text(1);
    if (!passesGuard(text)) return;
    const auto n = scaled(session, text);
    if (!n) return;
    const GoOn goOn = [&engine] { return engine.running(); };
    switch (unit) {
    case PauseUnit::Seconds: WaitSeconds(session, *n, goOn); break;
    case PauseUnit::Minutes: WaitMinutes(session, *n, goOn); break;
    case PauseUnit::Hours: WaitHours(session, *n, goOn); break;
    }
}

void setPausePercent(engine::SC& engine, const std::string& percent) {
    Session& session = engine.session();
    // The player's --percent holds the factor for the whole run.
    if (session.fixedPauseFactor) return;
    switch (engine.executeType()) {
    case 0:
        if (const auto value = engine::TextToDouble(percent); value && engine::isNumericText(percent))
            session.dblPauseFactor = *value / 100.0;
        break;
    case 1: session.sPausePercent = percent; break;
    case 2:
        session.sPausePercent = percent;
        if (session.onWhiteDebugPercent) session.onWhiteDebugPercent();
        break;
    default: break;
    }
}

void ignorePauses(engine::SC& engine, const std::string& word) { engine.session().bIgnorePauses = word == "true"; }

}  // namespace tarvoke::host
