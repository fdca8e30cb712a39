#include "host/pauses.h"

#include "engine/numeric.h"
#include "host/call.h"
#include "host/timing.h"

namespace tarvoke::host {
namespace {

using engine::Answer;

// The guard of every pause: the unscaled value rounded to 32 bits must be
// above 0, so Pause(0.4) waits nothing although its scaled length is not 0.
bool passesGuard(const std::string& text) {
    const auto value = engine::textToInt32(text);
    return value && *value > 0;
}

std::optional<int32_t> scaled(const Session& session, const std::string& text) {
    const auto value = engine::textToDouble(text);
    if (!value) return std::nullopt;
    return engine::roundToInt32(*value * session.pauseFactor);
}

enum class PauseUnit { Seconds, Minutes, Hours };

// pauses, pausem, pauseh: whole units, each waited out while the run goes on.
Answer pauseUnits(Call& call, PauseUnit unit) {
    Session& session = call.session;
    const std::string& text = call.text(0);
    if (session.ignorePauses || !passesGuard(text)) return {};
    const auto n = scaled(session, text);
    if (!n) return {};
    engine::SC& engine = call.engine;
    const GoOn goOn = [&engine] { return engine.running(); };
    switch (unit) {
    case PauseUnit::Seconds: waitSeconds(session, *n, goOn); break;
    case PauseUnit::Minutes: waitMinutes(session, *n, goOn); break;
    case PauseUnit::Hours: waitHours(session, *n, goOn); break;
    }
    return {};
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

namespace handlers {

// Milliseconds. A stopped run waits out no more pieces; the piece in hand
// was cut short.
Answer pause(Call& call) {
    Session& session = call.session;
    const std::string& text = call.text(0);
    if (session.ignorePauses || !passesGuard(text)) return {};
    const int32_t ms = scaled(session, text).value_or(0);
    engine::SC& engine = call.engine;
    forEachPausePiece(ms, [&](int32_t piece) {
        waitMilliseconds(session, piece);
        return engine.running();
    });
    return {};
}

Answer pauseSeconds(Call& call) { return pauseUnits(call, PauseUnit::Seconds); }
Answer pauseMinutes(Call& call) { return pauseUnits(call, PauseUnit::Minutes); }
Answer pauseHours(Call& call) { return pauseUnits(call, PauseUnit::Hours); }

Answer setPausePercent(Call& call) {
    Session& session = call.session;
    const std::string& percent = call.text(0);
    // The player's --percent holds the factor for the whole run.
    if (session.fixedPauseFactor) return {};
    switch (call.engine.executeType()) {
    case engine::ExecuteType::Play:
        if (const auto value = engine::textToDouble(percent); value && engine::isNumericText(percent))
            session.pauseFactor = *value / 100.0;
        break;
    case engine::ExecuteType::CorrectTime: session.pausePercent = percent; break;
    case engine::ExecuteType::WhiteDebug:
        session.pausePercent = percent;
        if (session.onWhiteDebugPercent) session.onWhiteDebugPercent();
        break;
    }
    return {};
}

Answer ignorePauses(Call& call) {
    call.session.ignorePauses = call.text(0) == "true";
    return {};
}

}  // namespace handlers
}  // namespace tarvoke::host
