#pragma once
// What the recorder needs from the host session, the same for the windows
// and the command-line recorder: the hotkeys' window selection and private
// screen capture.

#include "host/session.h"
#include "recorder/recorderstate.h"
#include "recorder/sampler.h"

namespace tarvoke::recorder {

SamplerHooks sessionHooks(host::Session& session);

}  // namespace tarvoke::recorder
