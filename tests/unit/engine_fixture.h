#pragma once
// An engine on the fake platform, for tests that load and run scripts.

#include <gtest/gtest.h>

#include <string>

#include "engine/sc.h"
#include "host/dispatch.h"
#include "host/session.h"
#include "platform/fake/fakeplatform.h"

namespace tarvoke::test {

class EngineTest : public ::testing::Test {
protected:
    EngineTest() { session.platform = fake.platform(); }

    void load(std::string text) { engine.initialize(text); }
    void run(const std::string& text) {
        load(text);
        engine.execute();
    }
    // A variable's value as the host commands see it.
    std::string valueOf(const std::string& name) const { return engine.getVariableAsString(name); }
    engine::ValueKind typeOf(const std::string& name) {
        std::string copy = name;
        engine.getVariable(copy);
        return engine.valueSlot().kind;
    }

    platform::fake::FakePlatform fake;
    host::Session session;
    host::HostCommands commands{session};
    engine::SC engine{commands};
};

}  // namespace tarvoke::test
