#pragma once
// The platform by role. The core reaches the desktop only through these.

#include "platform/capture.h"
#include "platform/clock.h"
#include "platform/input.h"
#include "platform/keystate.h"
#include "platform/messagebox.h"
#include "platform/pictures.h"
#include "platform/programs.h"
#include "platform/windows.h"

namespace tarvoke::platform {

struct Platform {
    Input* input = nullptr;
    KeyState* keys = nullptr;
    Windows* windows = nullptr;
    Programs* programs = nullptr;
    ScreenCapture* screen = nullptr;
    Clock* clock = nullptr;
    MessageBoxes* messages = nullptr;
    Pictures* pictures = nullptr;
};

}  // namespace tarvoke::platform
