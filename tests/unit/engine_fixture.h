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
    EngineTest() : engine(session) {
        session.platform = fake.platform();
        engine.setExternalCommands(&commands);
    }

    void load(std::string text) { engine.Initialize(text); }
    void run(const std::string& text) {
        load(text);
        engine.Execute();
    }
    // A variable's value as the host commands see it.
    std::string valueOf(const std::string& name) const { return engine.GetVariableAsString(name); }
    int32_t typeOf(const std::string& name) {
        std::string copy = name;
        engine.GetVariable(copy);
        return engine.valueSlot().lngValueType;
    }

    platform::fake::FakePlatform fake;
    host::Session session;
    engine::SC engine;
    host::HostCommands commands;
};

}  // namespace tarvoke::test
