#pragma once
// The folder of the running executable, where its helper program and its
// picture module lie.

#include <string>

namespace tarvoke::player {

// Without a trailing "/"; "." when the executable's path cannot be read.
std::string programFolder();
// The running executable's own path; empty when it cannot be read.
std::string programPath();
// The name messages on standard error begin with: tarvoke-play, or the
// compiled program's own name.
const char* programName();

}  // namespace tarvoke::player
