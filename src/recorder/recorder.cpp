#include "recorder/recorder.h"

#include <algorithm>
#include <limits>

#include "recorder/recording.h"

namespace tarvoke::recorder {
namespace {

int32_t clamped(int64_t ms) {
    return static_cast<int32_t>(
        std::clamp<int64_t>(ms, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

}  // namespace

Recorder::Recorder(RecorderState& state, FormState& form, Form kind, platform::KeyState& keys,
                   platform::Input& input, platform::Clock& clock, SamplerHooks hooks)
    : m_state(state), m_form(form), m_keys(keys), m_input(input), m_clock(clock),
      m_sampler(state, form, kind, keys, input, m_clocks, std::move(hooks)) {
    m_clocks.startEventClock = [this] { m_eventStart = now(); };
    // A stamp of the display may be a little older than a local reading
    // taken before it was read: a Pause is never negative.
    m_clocks.readEventClock = [this] { return clamped(std::max<int64_t>(0, m_time.between(m_eventStart, now()))); };
    m_clocks.startRunClock = [this] { m_runStart = m_clock.monotonicMs(); };
    m_clocks.readRunClock = [this] { return clamped(m_clock.monotonicMs() - m_runStart); };
}

Recorder::~Recorder() { stopListening(); }

DisplayTime::Instant Recorder::now() const {
    return m_changeTime ? *m_changeTime : DisplayTime::local(m_clock.monotonicMs());
}

bool Recorder::start(std::function<void()> afterChange) {
    m_afterChange = std::move(afterChange);
    m_pointer.reset();
    startRecording(m_state, m_form, m_keys, m_input, m_clocks);
    m_listening = m_keys.onChange([this](const platform::InputChange& change) { onChange(change); });
    return m_listening;
}

void Recorder::onChange(const platform::InputChange& change) {
    if (!m_state.recording) return;
    m_changeTime = m_time.stamp(change.time, m_clock.monotonicMs());
    if (change.pointer) m_pointer = change.pointer;
    m_sampler.tick(m_pointer);
    m_changeTime.reset();
    if (m_afterChange) m_afterChange();
}

void Recorder::sample() {
    if (m_state.recording) m_sampler.tick();
}

void Recorder::countSecond() { recorder::countSecond(m_state, m_clocks); }

void Recorder::stopListening() {
    if (m_listening) m_keys.onChange({});
    m_listening = false;
}

std::string Recorder::close() {
    stopListening();
    return closeRecording(m_state, m_clocks);
}

}  // namespace tarvoke::recorder
