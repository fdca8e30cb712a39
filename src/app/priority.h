#pragma once
// The process priority: raised as far as RLIMIT_NICE allows, never to
// real-time scheduling; a refusal is passed over.

namespace tarvoke::app {

void raiseProcessPriority();

// The nice value a process may reach with that RLIMIT_NICE (20 - limit, kept
// within -20..19); never above current, so it never lowers the priority.
int targetNice(unsigned long long rlimitNice, int current);

}  // namespace tarvoke::app
