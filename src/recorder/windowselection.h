#pragma once
// The lines that select the window under the cursor again on playback: the
// top-level window by class and title, then each child on the way down by
// its class.

#include <string>

#include "platform/input.h"
#include "platform/windows.h"

namespace tarvoke::recorder {

std::string windowSelection(platform::Windows& windows, platform::Input& input);

// Cuts a text at 99 bytes, backing up to the start of a UTF-8 sequence.
std::string cutWindowText(std::string text);

}  // namespace tarvoke::recorder
