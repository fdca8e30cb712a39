#pragma once
// The platform for logic tests: the dry-run roles writing into a transcript
// that a test reads back, with a clock that never sleeps.

#include <string>
#include <vector>

#include "platform/dryrun/dryrun.h"

namespace tarvoke::platform::fake {

class FakePlatform {
public:
    FakePlatform()
        : m_roles([this](std::string_view line) { transcript.emplace_back(line); }, [this] { ++yields; }) {}
    Platform platform() { return m_roles.platform(); }

    std::vector<std::string> transcript;
    int64_t yields = 0;

private:
    dryrun::DryRunPlatform m_roles;
};

}  // namespace tarvoke::platform::fake
