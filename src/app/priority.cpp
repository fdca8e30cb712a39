#include "app/priority.h"

#include <algorithm>
#include <cerrno>
#include <sys/resource.h>

namespace tarvoke::app {

int targetNice(unsigned long long rlimitNice, int current) {
    const long long ceiling = 20 - static_cast<long long>(std::min<unsigned long long>(rlimitNice, 40));
    const int lowest = static_cast<int>(std::clamp<long long>(ceiling, -20, 19));
    return std::min(current, lowest);
}

void raiseProcessPriority() {
    struct rlimit limit {};
    if (::getrlimit(RLIMIT_NICE, &limit) != 0) return;
    errno = 0;
    const int current = ::getpriority(PRIO_PROCESS, 0);
    if (current == -1 && errno != 0) return;
    const unsigned long long allowed = limit.rlim_cur == RLIM_INFINITY ? 40 : limit.rlim_cur;
    const int target = targetNice(allowed, current);
    if (target < current) ::setpriority(PRIO_PROCESS, 0, target);
}

}  // namespace tarvoke::app
