#include "record.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <unistd.h>
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

// True when every byte reached standard output; a closed pipe is an error
// like any other, not the end of the program.
bool writeToStandardOutput(const std::string& text, std::string& error) {
    struct sigaction ignore {}, old {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, &old);
    std::fflush(stdout);
    const char* data = text.data();
    size_t left = text.size();
    int failure = 0;
    while (left > 0) {
        const ssize_t written = ::write(STDOUT_FILENO, data, left);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            failure = written < 0 ? errno : EIO;
            break;
        }
        data += written;
        left -= static_cast<size_t>(written);
    }
    sigaction(SIGPIPE, &old, nullptr);
    if (failure == 0) return true;
    error = std::strerror(failure);
    return false;
}

// $XDG_STATE_HOME/tarvoke/, else ~/.local/state/tarvoke/: a new file there
// holding the script; its path, or empty when none could be written.
std::string keepInStateFolder(const std::string& script) {
    std::filesystem::path folder;
    if (const char* state = std::getenv("XDG_STATE_HOME"); state && *state == '/') folder = state;
    else if (const char* home = std::getenv("HOME"); home && *home) folder = std::filesystem::path(home) / ".local/state";
    else return {};
    folder /= "tarvoke";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    char stamp[32] = "recording";
    const std::time_t now = std::time(nullptr);
    if (std::tm local {}; localtime_r(&now, &local)) std::strftime(stamp, sizeof stamp, "recording-%Y%m%d-%H%M%S", &local);
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::string name = std::string(stamp) + (attempt ? "-" + std::to_string(attempt) : "") + ".tk";
        const std::string path = (folder / name).string();
        const platform::SaveResult saved =
            platform::saveFile(path, script, {.existing = platform::Existing::Keep, .mode = 0600});
        if (saved) return path;
        if (saved.outcome != platform::SaveOutcome::TargetExists) return {};
    }
    return {};
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
    m_state.mouseMoves = m_options.mouseMove;
    m_state.extendedClicks = m_options.extendedClicks;
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
// standard output instead, and when that fails too, to a file of its own in
// the user's state folder.
bool CommandLineRecorder::write(const std::string& script) const {
    const std::string error = writeRecording(*m_options.record, script, m_options.force);
    if (error.empty()) {
        std::fprintf(stderr, "tarvoke-play: recorded into '%s'\n", m_options.record->c_str());
        return true;
    }
    std::string outputError;
    if (!writeToStandardOutput(script + "\n", outputError)) {
        const auto kept = keepInStateFolder(script);
        if (kept.empty())
            std::fprintf(stderr, "tarvoke-play: cannot write '%s': %s; standard output failed too (%s)\n",
                         m_options.record->c_str(), error.c_str(), outputError.c_str());
        else
            std::fprintf(stderr, "tarvoke-play: cannot write '%s': %s; standard output failed too (%s); "
                                 "the recording is kept in '%s'\n",
                         m_options.record->c_str(), error.c_str(), outputError.c_str(), kept.c_str());
        return false;
    }
    std::fprintf(stderr, "tarvoke-play: cannot write '%s': %s; the recording follows on standard output\n",
                 m_options.record->c_str(), error.c_str());
    return false;
}

}  // namespace tarvoke::player
