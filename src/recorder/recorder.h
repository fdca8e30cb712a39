#pragma once
// A recording driven by the platform's changes: the sampler ticks once
// after each press, release and move, while the key state answers as of
// right after it, and the Pause lines are timed by the display's own
// stamps. So a press and its release within one millisecond give both
// lines (and Pause(0) between them), and nothing runs while the user does
// nothing. On a platform that cannot tell of changes the owner's timer
// calls sample() instead, as a sampler of the state.

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/clock.h"
#include "platform/input.h"
#include "platform/keystate.h"
#include "recorder/displaytime.h"
#include "recorder/recorderstate.h"
#include "recorder/sampler.h"

namespace tarvoke::recorder {

class Recorder {
public:
    Recorder(RecorderState& state, FormState& form, Form kind, platform::KeyState& keys, platform::Input& input,
             platform::Clock& clock, SamplerHooks hooks);
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // Starts a recording with the state's settings. afterChange runs after
    // the tick of each change (the hotkey poll). True when changes drive it;
    // false: the owner calls sample() from a timer.
    bool start(std::function<void()> afterChange);
    // One tick now, for a platform without changes.
    void sample();
    // The seconds timer.
    void countSecond();
    // Takes no more changes: what the display sends after a stop is not
    // part of the recording.
    void stopListening();
    // Stops taking changes and returns the finished script.
    std::string close();

    const Stopwatches& clocks() const { return m_clocks; }

private:
    void onChange(const platform::InputChange& change);
    DisplayTime::Instant now() const;

    RecorderState& m_state;
    FormState& m_form;
    platform::KeyState& m_keys;
    platform::Input& m_input;
    platform::Clock& m_clock;
    Stopwatches m_clocks;
    Sampler m_sampler;
    std::function<void()> m_afterChange;
    bool m_listening = false;
    DisplayTime m_time;
    // The change in hand, while its tick runs.
    std::optional<DisplayTime::Instant> m_changeTime;
    DisplayTime::Instant m_eventStart;
    int64_t m_runStart = 0;
    // Where the pointer was at the last change that said so.
    std::optional<platform::Point> m_pointer;
};

}  // namespace tarvoke::recorder
