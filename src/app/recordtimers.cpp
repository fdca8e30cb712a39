#include "app/recordtimers.h"

#include <utility>

#include "app/app.h"
#include "app/playtimers.h"
#include "recorder/sessionhooks.h"

namespace tarvoke::app {

namespace {

constexpr int kSampleIntervalMs = 1;
constexpr int kSecondMs = 1000;

}  // namespace

bool confirmRecording(App& app) {
    return app.dialogs().askYesNo("Confirm Recording",
                                  "There is an existing script open. If you record a new script Tarvoke will "
                                  "delete the existing script. Do you wish to continue?");
}

RecordTimers::RecordTimers(App& app, recorder::Form kind) : m_app(app) {
    host::Session& session = app.session;
    if (platform::KeyState* keys = app.keys(); keys && session.platform.input && session.platform.clock)
        m_recorder = std::make_unique<recorder::Recorder>(app.recorder, m_form, kind, *keys, *session.platform.input,
                                                          *session.platform.clock, recorder::sessionHooks(session));
    m_sampleTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_secondTimer, &QTimer::timeout, this, [this] { m_recorder->countSecond(); });
    connect(&m_sampleTimer, &QTimer::timeout, this, [this] { m_recorder->sample(); });
}

RecordTimers::~RecordTimers() = default;

void RecordTimers::start(PlayTimers& hotkeys) {
    if (!m_recorder) return;  // no key state or input: nothing could be recorded
    recorder::RecorderState& state = m_app.recorder;
    state.mouseMoves = m_app.mouseMove;
    state.extendedClicks = m_app.extendedClicks;
    // The key state's changes drive the sampler and the hotkeys where the
    // platform tells of them; elsewhere the sample timer samples every
    // millisecond beside the hotkey poll.
    const bool driven = m_recorder->start([&hotkeys] { hotkeys.pollHotkeys(); });
    m_secondTimer.start(kSecondMs);
    if (!driven) {
        m_sampleTimer.start(kSampleIntervalMs);
    } else if (hotkeys.hotkeyPollOn()) {
        hotkeys.setHotkeyPoll(false);
        m_restingPoll = &hotkeys;
    }
}

std::optional<std::string> RecordTimers::closeIfRecording() {
    if (!m_app.recorder.recording) return std::nullopt;
    m_sampleTimer.stop();
    m_secondTimer.stop();
    std::string script = m_recorder->close();
    if (m_restingPoll) std::exchange(m_restingPoll, nullptr)->setHotkeyPoll(true);
    // Ctrl+6 and Ctrl+7 change the settings for good.
    const recorder::RecorderState& state = m_app.recorder;
    if (state.mouseMoves != m_app.mouseMove || state.extendedClicks != m_app.extendedClicks) {
        m_app.mouseMove = state.mouseMoves;
        m_app.extendedClicks = state.extendedClicks;
        m_app.saveSettings();
    }
    return script;
}

}  // namespace tarvoke::app
