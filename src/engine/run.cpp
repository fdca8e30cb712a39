// The run loop: a program counter over the statement table that yields to
// the event loop before every statement. Handlers that run inside a yield
// may stop, pause or even reload the engine, so nothing here keeps a
// reference into the tables across a yield or a statement.

#include "engine/commands.h"
#include "engine/sc.h"

namespace tarvoke::engine {

void SC::stopExecution() {
    m_running = false;
    m_currentLine = m_startLine;
}

void SC::pauseExecution() { m_running = false; }

void SC::execute() {
    stopExecution();
    m_running = true;
    for (;;) {
        // The endfunction that closes main is never executed.
        if (m_currentLine == m_endLine) return;
        m_environment.yield();
        if (m_currentLine > m_statementCount || m_currentLine < 1) return;
        if (m_executeType == ExecuteType::WhiteDebug && m_countStatement) m_countStatement();
        m_stepStopped = false;
        if (!runStatement()) return;
        ++m_currentLine;
        if (!m_running) return;
    }
}

// Runs the statement at the current line; false when the run ends at once.
// A jump leaves the line one before its target, since the loop adds 1.
bool SC::runStatement() {
    const int32_t line = m_currentLine;
    const Statement& statement = m_statements[line];
    switch (static_cast<Command>(statement.number)) {
    case Command::Call:
        if (m_callDepth >= kMaxCallDepth) return true;
        ++m_callDepth;
        if (static_cast<size_t>(m_callDepth) >= m_callStack.size()) m_callStack.resize(m_callDepth + 1);
        m_callStack[m_callDepth] = line;
        // An unknown function: the run goes on, the pushed line stays.
        if (statement.jump != kEndsRun) m_currentLine = statement.jump - 1;
        return true;
    case Command::Function:
    case Command::EndIf:
        return true;
    case Command::EndFunction:
        // Falling into a function's tail with no call open has nowhere to return.
        if (m_callDepth <= 0) return false;
        m_currentLine = m_callStack[m_callDepth--];
        return true;
    case Command::If:
    case Command::While: {
        // evaluate works on copies and does not yield, so the reference holds.
        if (evaluate(statement.parameters[0])) return true;
        if (statement.jump == kEndsRun) return false;
        m_currentLine = statement.jump;
        return true;
    }
    case Command::Else:
        if (statement.jump == kEndsRun) return false;
        m_currentLine = statement.jump;
        return true;
    case Command::EndWhile:
        if (statement.jump == kEndsRun) return false;
        m_currentLine = statement.jump - 1;  // the while runs again
        return true;
    default:
        if (statement.number < kFirstHostCommand) executeBuiltin();
        else if (const HostRow* row = hostRow(statement.number)) runHostCommand(*row);
        return true;
    }
}

void SC::runHostCommand(const HostRow& row) {
    const int32_t line = m_currentLine;
    storeAnswer(m_environment.runCommand(*this, row, line), line);
}

}  // namespace tarvoke::engine
