// The load: initialize turns a script text into the statement and function
// tables and finds where a run begins and ends. Every text loads.

#include <algorithm>
#include <cassert>

#include "engine/commands.h"
#include "engine/numeric.h"
#include "engine/sc.h"
#include "engine/scripttext.h"

namespace tarvoke::engine {
SC::SC(Environment& environment) : m_environment(environment) { resetTables(); }

void SC::resetTables() {
    m_statementCount = 0;
    m_currentLine = 1;
    m_startLine = 1;
    m_endLine = 0;
    m_statements.assign(1, Statement{});
    m_parameterStore.clear();
    m_functions.clear();
    m_callStack.assign(1, 0);
    m_callDepth = 0;
    m_stringVariables.assign(1, {});
    m_textBytes = 0;
    m_longVariables.assign(1, {});
    m_doubleVariables.assign(1, {});
    m_names.clear();
    m_names[""] = NameSlots{0, 0, 0};
}

void SC::initialize(std::string& inputCode, SourceForm form) {
    m_running = true;
    resetTables();
    int32_t functionsSeen = 0;
    int32_t ordinalOfMain = 0;

    inputCode = normaliseSource(inputCode, form);
    reserveTables(inputCode);
    std::string buffer;
    splitStatements(
        inputCode, buffer,
        [&](std::string_view statement, size_t) { parseStatement(statement, functionsSeen, ordinalOfMain); },
        [](size_t) {});
    findJumps();
    m_running = false;
}

// Every statement ends at a ";" and holds at most one parameter more than
// its commas, so these bounds hold; pages reserved and never written cost
// nothing, while growing the tables would copy them.
void SC::reserveTables(const std::string& code) {
    size_t semicolons = 0, commas = 0;
    for (char c : code) {
        semicolons += c == ';';
        commas += c == ',';
    }
    m_statements.reserve(semicolons + 1);
    m_parameterStore.reserve(commas + semicolons);
}

void SC::parseStatement(std::string_view buffer, int32_t& functionsSeen, int32_t& ordinalOfMain) {
    ++m_statementCount;
    Statement& statement = m_statements.emplace_back();
    const int32_t line = m_statementCount;

    statement.number = static_cast<int32_t>(commandNumber(getCommandName(buffer)));
    const std::string_view parameterText = getParameterText(buffer);
    // Nine or more parameters keep none of them.
    if (countParameters(parameterText) <= 8) {
        assert(m_parameterStore.size() + countParameters(parameterText) <= m_parameterStore.capacity());
        statement.parameters.m_first = m_parameterStore.data() + m_parameterStore.size();
        forEachParameter(parameterText, [this](std::string_view piece) { m_parameterStore.emplace_back(piece); });
        statement.parameters.m_count = static_cast<uint32_t>(m_parameterStore.data() + m_parameterStore.size() -
                                                             statement.parameters.m_first);
    }

    if (statement.number == static_cast<int32_t>(Command::Function)) {
        ++functionsSeen;
        if (statement.parameters[0] == "main") {
            m_startLine = m_currentLine = line;
            ordinalOfMain = functionsSeen;
        }
        m_functions.push_back({statement.parameters[0], line});
    }
    // The last endfunction before the next function closes main.
    if (statement.number == static_cast<int32_t>(Command::EndFunction) && ordinalOfMain == functionsSeen)
        m_endLine = line;
}

std::string SC::hexToAscii(std::string& digits) {
    std::string packed;
    for (char c : digits)
        if (c != ' ') packed += c;
    digits = packed;
    std::string text;
    for (size_t i = 0; i < packed.size(); i += 2) {
        const std::string pair = "&h" + packed.substr(i, 2);
        text += static_cast<char>(static_cast<uint32_t>(readNumericPrefix(pair)) & 0xFF);
    }
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace tarvoke::engine
