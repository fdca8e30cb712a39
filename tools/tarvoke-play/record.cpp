#include "record.h"

#include <cstdio>
#include <filesystem>

#include "platform/filesave.h"
#include "recorder/recorder.h"
#include "recorder/sessionhooks.h"

namespace tarvoke::player {
namespace {

constexpr int kSampleIntervalMs = 1;
constexpr int kSecondMs = 1000;

std::string folderOf(const std::string& file) {
    const std::filesystem::path parent = std::filesystem::path(file).parent_path();
    return parent.empty() ? "." : parent.string();
}

// Empty when written, else why not. Without overwrite an existing target is
// never replaced: one may have appeared while recording.
std::string writeRecording(const std::string& target, const std::string& text, bool overwrite) {
    const platform::SaveResult saved = platform::saveFile(
        target, text, {.existing = overwrite ? platform::Existing::Replace : platform::Existing::Keep, .mode = 0644});
    if (saved) return {};
    if (saved.outcome == platform::SaveOutcome::TargetExists) return "it exists now (use --force to overwrite it)";
    return saved.reason();
}

}  // namespace

std::string recordingProblem(const Options& options) {
    const std::string& file = *options.record;
    std::error_code error;
    if (std::filesystem::is_directory(file, error)) return "cannot record into '" + file + "': it is a folder";
    if (std::filesystem::exists(file, error) && !options.force)
        return "'" + file + "' exists; use --force to record over it";
    if (!std::filesystem::is_directory(folderOf(file), error))
        return "cannot record into '" + file + "': the folder '" + folderOf(file) + "' is not there";
    return {};
}

CommandLineRecorder::CommandLineRecorder(const Options& options, host::Session& session, platform::EventLoop& loop)
    : m_options(options), m_session(session), m_loop(loop) {}

bool CommandLineRecorder::run(const std::function<void()>& afterChange) {
    platform::Platform& platform = m_session.platform;
    recorder::Recorder recorder(m_state, m_form, recorder::Form::Basic, *platform.keys, *platform.input,
                                *platform.clock, recorder::sessionHooks(m_session));
    // The flags flip with Ctrl+6 and Ctrl+7 for the rest of this recording
    // alone: the player keeps no settings.
    m_state.bMouseMove = m_options.mouseMove;
    m_state.bExtendedClicks = m_options.extendedClicks;
    const bool driven = recorder.start(afterChange);
    m_recorder = &recorder;
    {
        const auto seconds =
            m_loop.every(std::chrono::milliseconds(kSecondMs), [&recorder] { recorder.countSecond(); });
        // Without changes told by the key state, a sampler every millisecond.
        std::unique_ptr<platform::EventLoop::Handle> samples;
        if (!driven)
            samples = m_loop.every(std::chrono::milliseconds(kSampleIntervalMs), [&recorder, &afterChange] {
                recorder.sample();
                afterChange();
            });
        std::fprintf(stderr, "tarvoke-play: recording into '%s'; press Ctrl+0 to stop\n", m_options.record->c_str());
        while (!m_stopped) m_loop.turn(true);
    }
    m_recorder = nullptr;
    return write(recorder.close());
}

// The keys of Ctrl+0 may have come in one read with more: those are left out.
void CommandLineRecorder::stop() {
    m_stopped = true;
    if (m_recorder) m_recorder->stopListening();
}

// Nothing recorded is lost: a script that cannot be written goes to
// standard output instead.
bool CommandLineRecorder::write(const std::string& script) const {
    const std::string error = writeRecording(*m_options.record, script, m_options.force);
    if (error.empty()) {
        std::fprintf(stderr, "tarvoke-play: recorded into '%s'\n", m_options.record->c_str());
        return true;
    }
    std::fprintf(stderr, "tarvoke-play: cannot write '%s': %s; the recording follows on standard output\n",
                 m_options.record->c_str(), error.c_str());
    std::fwrite(script.data(), 1, script.size(), stdout);
    std::fputc('\n', stdout);
    return false;
}

}  // namespace tarvoke::player
