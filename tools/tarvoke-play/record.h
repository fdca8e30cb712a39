#pragma once
// tarvoke-play --record: the recorder driven from the command line.

#include <functional>
#include <string>

#include "host/session.h"
#include "options.h"
#include "platform/eventloop.h"
#include "recorder/recorder.h"
#include "recorder/recorderstate.h"

namespace tarvoke::player {

// Empty when a recording into the file may start, else the one line that
// says why not (an existing file without --force, a folder that is not there).
std::string recordingProblem(const Options& options);

class CommandLineRecorder {
public:
    CommandLineRecorder(const Options& options, host::Session& session, platform::EventLoop& loop);
    // Records until stop(), then writes the finished script; false when it
    // could not be written (the script then goes to standard output).
    // afterChange runs after each press, release or move is recorded.
    bool run(const std::function<void()>& afterChange);
    void stop();

private:
    bool write(const std::string& script) const;

    const Options& m_options;
    host::Session& m_session;
    recorder::RecorderState m_state;
    recorder::FormState m_form;
    platform::EventLoop& m_loop;
    bool m_stopped = false;
    recorder::Recorder* m_recorder = nullptr;  // while run() records
};

}  // namespace tarvoke::player
