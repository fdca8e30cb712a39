#pragma once
// The folder of the running executable, where its helper program and its
// picture module lie.

#include <string>

namespace tarvoke::player {

// Without a trailing "/"; "." when the executable's path cannot be read.
std::string programFolder();

}  // namespace tarvoke::player
