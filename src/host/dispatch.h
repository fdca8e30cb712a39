#pragma once
// The host side of the engine: the yield, the message box, the last click
// and the host commands, run from their rows in engine/commands.h.

#include "engine/environment.h"
#include "host/session.h"

namespace tarvoke::host {

class HostCommands : public engine::Environment {
public:
    explicit HostCommands(Session& session) : m_session(session) {}

    void yield() override;
    bool stopPending() const override { return m_session.stopPending(); }
    void showMessage(uint32_t flags, const std::string& title, const std::string& text) override;
    engine::LastPoint lastPoint() override;
    engine::Answer runCommand(engine::SC& engine, const engine::HostRow& row, int32_t line) override;

private:
    Session& m_session;
};

}  // namespace tarvoke::host
