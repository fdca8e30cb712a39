#pragma once
// The last line of defence of the player and of compiled programs: whatever
// escapes a run (memory that ran out where no step could fail), or ends it
// through std::terminate, lets go of the keys the open desktop holds and
// ends the program with one line on stderr and status 70.

#include <functional>

namespace tarvoke::player {

constexpr int kInternalErrorStatus = 70;

// name: the program as its messages call it.
int runGuarded(const char* name, const std::function<int()>& run);

}  // namespace tarvoke::player
