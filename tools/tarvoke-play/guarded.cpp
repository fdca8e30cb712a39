#include "guarded.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "desktop.h"

namespace tarvoke::player {
namespace {

const char* g_name = "";

}  // namespace

int runGuarded(const char* name, const std::function<int()>& run) {
    g_name = name;
    // An exception thrown where it cannot unwind ends the program as one that escapes.
    std::set_terminate([] {
        Desktop::releaseAllOfOpen();
        std::fprintf(stderr, "%s: internal error\n", g_name);
        std::fflush(stdout);
        std::_Exit(kInternalErrorStatus);
    });
    // The desktop lets go of the keys on the way out.
    try {
        return run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: internal error: %s\n", name, error.what());
    } catch (...) {
        std::fprintf(stderr, "%s: internal error\n", name);
    }
    std::fflush(stdout);
    return kInternalErrorStatus;
}

}  // namespace tarvoke::player
