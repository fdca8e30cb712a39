// The load: Initialize turns a script text into the statement and function
// tables and finds where a run begins and ends. Every text loads.

#include <algorithm>
#include <cassert>

#include "engine/commands.h"
#include "engine/numeric.h"
#include "engine/sc.h"
#include "engine/scripttext.h"

namespace tarvoke::engine {
namespace {

// The number of a command name; -1 for a name in neither list. The name is
// lower-case already unless quotes kept capitals in it.
int32_t commandNumber(std::string_view name) {
    if (std::any_of(name.begin(), name.end(), [](char c) { return c >= 'A' && c <= 'Z'; }))
        return commandNumber(lowerAscii(name));
    const int32_t builtin = builtinCommandNumber(name);
    return builtin >= 0 ? builtin : hostCommandNumber(name);
}

}  // namespace

SC::SC(host::Session& session) : m_session(session) { resetTables(); }

void SC::resetTables() {
    m_lngStatementCount = 0;
    m_lngCurrentLine = 1;
    m_lngStartLine = 1;
    m_lngEndLine = 0;
    m_statements.assign(1, Statement{});
    m_parameterStore.clear();
    m_functions.clear();
    m_callStack.assign(1, 0);
    m_lngCallDepth = 0;
    m_stringVariables.assign(1, {});
    m_textBytes = 0;
    m_longVariables.assign(1, {});
    m_doubleVariables.assign(1, {});
    m_names.clear();
    m_names[""] = NameSlots{0, 0, 0};
}

void SC::Initialize(std::string& sInputCode) {
    m_blnRunning = true;
    resetTables();
    int32_t functionsSeen = 0;
    int32_t ordinalOfMain = 0;

    std::string normalised = StripSource(sInputCode);
    std::erase_if(normalised, [](char c) { return c == '\n' || c == '\r'; });  // RemoveLineBreaks, in place
    sInputCode = std::move(normalised);
    reserveTables(sInputCode);

    // A ";" ends a statement only when the buffer holds both brackets
    // somewhere; otherwise it is dropped and the text runs on. Quotes do not
    // matter here, and text behind the last ";" is ignored. Most statements
    // are one piece between two ";" and are parsed where they stand.
    std::string buffer;
    bool hasOpen = false, hasClose = false;
    const std::string_view code = sInputCode;
    for (size_t start = 0, end; (end = code.find(';', start)) != std::string_view::npos; start = end + 1) {
        const std::string_view piece = code.substr(start, end - start);
        hasOpen |= piece.find('(') != std::string_view::npos;
        hasClose |= piece.find(')') != std::string_view::npos;
        if (!(hasOpen && hasClose)) {
            buffer += piece;
            continue;
        }
        if (buffer.empty()) {
            parseStatement(piece, functionsSeen, ordinalOfMain);
        } else {
            buffer += piece;
            parseStatement(buffer, functionsSeen, ordinalOfMain);
            buffer.clear();
        }
        hasOpen = hasClose = false;
    }
    findJumps();
    m_blnRunning = false;
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
    ++m_lngStatementCount;
    Statement& statement = m_statements.emplace_back();
    const int32_t line = m_lngStatementCount;

    statement.functionID = commandNumber(GetCommandName(buffer));
    const std::string_view parameterText = GetParameterText(buffer);
    // Nine or more parameters keep none of them.
    if (CountParameters(parameterText) <= 8) {
        assert(m_parameterStore.size() + CountParameters(parameterText) <= m_parameterStore.capacity());
        statement.sParameter.m_first = m_parameterStore.data() + m_parameterStore.size();
        forEachParameter(parameterText, [this](std::string_view piece) { m_parameterStore.emplace_back(piece); });
        statement.sParameter.m_count = static_cast<uint32_t>(m_parameterStore.data() + m_parameterStore.size() -
                                                             statement.sParameter.m_first);
    }

    if (statement.functionID == static_cast<int32_t>(Command::Function)) {
        ++functionsSeen;
        if (statement.sParameter[0] == "main") {
            m_lngStartLine = m_lngCurrentLine = line;
            ordinalOfMain = functionsSeen;
        }
        m_functions.push_back({statement.sParameter[0], line});
    }
    // The last endfunction before the next function closes main.
    if (statement.functionID == static_cast<int32_t>(Command::EndFunction) && ordinalOfMain == functionsSeen)
        m_lngEndLine = line;
}

int32_t SC::ReturnFunctionID(std::string& functionName) const {
    functionName = lowerAscii(functionName);
    const int32_t builtin = builtinCommandNumber(functionName);
    return builtin >= 0 ? builtin : ReturnExternalFunctionID(functionName);
}

std::string SC::ReturnFunctionName(int32_t ID) const {
    const std::string_view builtin = builtinCommandName(ID);
    return builtin.empty() ? ReturnExternalName(ID) : std::string(builtin);
}

int32_t SC::ReturnExternalFunctionID(std::string_view functionName) { return hostCommandNumber(functionName); }

std::string SC::ReturnExternalName(int32_t ID) {
    const std::string_view name = hostCommandName(ID);
    return name.empty() ? "UNKNOWN COMMAND" : std::string(name);
}

std::string SC::HextoAsciiNS(std::string& Text69) {
    std::string packed;
    for (char c : Text69)
        if (c != ' ') packed += c;
    Text69 = packed;
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
