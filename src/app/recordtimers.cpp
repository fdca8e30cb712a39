#include "app/recordtimers.h"

#include "app/app.h"
#include "recorder/recording.h"
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
    m_clocks = recorder::sessionClocks(session);
    if (platform::KeyState* keys = app.keys(); keys && session.platform.input)
        m_sampler = std::make_unique<recorder::Sampler>(app.recorder, m_form, kind, *keys, *session.platform.input,
                                                        m_clocks, recorder::sessionHooks(session));
    m_tmrRecord.setTimerType(Qt::PreciseTimer);
    connect(&m_tmrRecTime, &QTimer::timeout, this, [this] { recorder::countSecond(m_app.recorder, m_clocks); });
    connect(&m_tmrRecord, &QTimer::timeout, this, [this] { m_sampler->tick(); });
}

void RecordTimers::start() {
    if (!m_sampler) return;  // no key state or input: nothing could be recorded
    recorder::RecorderState& state = m_app.recorder;
    state.bMouseMove = m_app.bMouseMove;
    state.bExtendedClicks = m_app.bExtendedClicks;
    recorder::startRecording(state, m_form, *m_app.keys(), *m_app.session.platform.input, m_clocks);
    m_tmrRecTime.start(kSecondMs);
    m_tmrRecord.start(kSampleIntervalMs);
}

std::optional<std::string> RecordTimers::closeIfRecording() {
    if (!m_app.recorder.bRecording) return std::nullopt;
    m_tmrRecord.stop();
    m_tmrRecTime.stop();
    return recorder::closeRecording(m_app.recorder, m_clocks);
}

}  // namespace tarvoke::app
