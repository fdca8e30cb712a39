// The run loop: a program counter over the statement table that yields to
// the event loop before every statement. Handlers that run inside a yield
// may stop, pause or even reload the engine, so nothing here keeps a
// reference into the tables across a yield or a statement.

#include "engine/commands.h"
#include "engine/sc.h"
#include "host/session.h"

namespace tarvoke::engine {

void SC::StopExecution() {
    m_blnRunning = false;
    m_lngCurrentLine = m_lngStartLine;
}

void SC::PauseExecution() { m_blnRunning = false; }

void SC::Execute() {
    StopExecution();
    m_blnRunning = true;
    for (;;) {
        // The endfunction that closes main is never executed.
        if (m_lngCurrentLine == m_lngEndLine) return;
        m_session.platform.clock->yield();
        if (m_lngCurrentLine > m_lngStatementCount || m_lngCurrentLine < 1) return;
        if (m_intExecuteType == 2 && m_countStatement) m_countStatement();
        m_stepStopped = false;
        if (!runStatement()) return;
        ++m_lngCurrentLine;
        if (!m_blnRunning) return;
    }
}

// Runs the statement at the current line; false when the run ends at once.
// A jump leaves the line one before its target, since the loop adds 1.
bool SC::runStatement() {
    const int32_t line = m_lngCurrentLine;
    const Statement& statement = m_statements[line];
    switch (static_cast<Command>(statement.functionID)) {
    case Command::Call:
        if (m_lngCallDepth >= kMaxCallDepth) return true;
        ++m_lngCallDepth;
        if (static_cast<size_t>(m_lngCallDepth) >= m_callStack.size()) m_callStack.resize(m_lngCallDepth + 1);
        m_callStack[m_lngCallDepth] = line;
        // An unknown function: the run goes on, the pushed line stays.
        if (statement.jump != kEndsRun) m_lngCurrentLine = statement.jump - 1;
        return true;
    case Command::Function:
    case Command::EndIf:
        return true;
    case Command::EndFunction:
        // Falling into a function's tail with no call open has nowhere to return.
        if (m_lngCallDepth <= 0) return false;
        m_lngCurrentLine = m_callStack[m_lngCallDepth--];
        return true;
    case Command::If:
    case Command::While: {
        // Evaluate works on copies and does not yield, so the reference holds.
        if (Evaluate(statement.sParameter[0])) return true;
        if (statement.jump == kEndsRun) return false;
        m_lngCurrentLine = statement.jump;
        return true;
    }
    case Command::Else:
        if (statement.jump == kEndsRun) return false;
        m_lngCurrentLine = statement.jump;
        return true;
    case Command::EndWhile:
        if (statement.jump == kEndsRun) return false;
        m_lngCurrentLine = statement.jump - 1;  // the while runs again
        return true;
    default:
        ExecuteBuiltin();
        return true;
    }
}

void SC::ExecuteExternalFunction(int32_t functionID, int32_t lngLine) {
    if (functionID < kFirstHostCommand || functionID > kLastHostCommand) return;
    if (m_external) m_external->execute(*this, functionID, lngLine);
}

}  // namespace tarvoke::engine
