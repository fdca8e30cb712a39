#pragma once
// SC, the script engine: loads a script text into statement and function
// tables, runs them, holds the variables and prints its state.
//
// Lines are 1-based indexes into the statement table and have nothing to do
// with the lines of the text. Member names follow the language's own.

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/statement.h"

namespace tarvoke::host {
struct Session;
}

namespace tarvoke::engine {

struct FunctionEntry {
    std::string sName;
    int32_t lngLine = 0;
};

// The engine's one scratch value. A look-up writes the tag and the member of
// that type only; the other two keep what they held.
struct ValueSlot {
    std::string sValue;
    int32_t lngValue = 0;
    double dblValue = 0;
    int32_t lngValueType = 8;
};

enum ValueType : int32_t { kText = 8, kLong = 9, kDouble = 10 };

// Host commands (100..157) run outside the engine; the dispatch implements this.
class ExternalCommands {
public:
    virtual ~ExternalCommands() = default;
    virtual void execute(class SC& engine, int32_t functionID, int32_t lngLine) = 0;
};

class SC {
public:
    static constexpr int32_t kEndsRun = -1;
    // A Call deeper than this fails as a failed step does: nothing happens.
    static constexpr int32_t kMaxCallDepth = 100000;
    static constexpr size_t kDefaultTextMemory = size_t{1} << 30;

    explicit SC(host::Session& session);
    // Statements point into the engine's own parameter store.
    SC(const SC&) = delete;
    SC& operator=(const SC&) = delete;

    // Load. sInputCode receives the normalised text.
    void Initialize(std::string& sInputCode);
    std::string GetDebug() const;
    // The dump, piece after piece, without building it whole; false when a
    // stop came before its end.
    bool writeDebug(const std::function<void(std::string_view)>& write) const;
    void StopExecution();
    void PauseExecution();
    void Execute();
    int32_t ReturnFunctionID(std::string& functionName) const;
    std::string ReturnFunctionName(int32_t ID) const;
    bool Evaluate(const std::string& inputParameters);
    void AddSetVariable(const std::string& sVariableName, int32_t sVariableType, int32_t FUNCTION_ID);
    void GetVariable(std::string& sVariableName);
    std::string GetVariableAsString(const std::string& sVariableName) const;
    bool IsExistingVariable(const std::string& sVariableName) const;
    void SetExecuteType(int16_t intType) { m_intExecuteType = intType; }
    static std::string HextoAsciiNS(std::string& Text69);
    static int32_t ReturnExternalFunctionID(std::string_view functionName);
    static std::string ReturnExternalName(int32_t ID);
    void ExecuteExternalFunction(int32_t functionID, int32_t lngLine);

    // Wiring.
    void setExternalCommands(ExternalCommands* commands) { m_external = commands; }
    // The longest text a variable holds, 2^31 - 1 bytes as the language's
    // texts; a step that would make a longer one fails. Tests lower it.
    void setMaxTextBytes(size_t bytes) { m_maxTextBytes = bytes; }
    // The most all texts may hold together: the variables and the value in
    // hand, and while a step works, the text it builds. A step beyond fails.
    void setMaxTextMemory(size_t bytes) { m_maxTextMemory = bytes; }
    size_t textMemory() const { return m_textBytes + m_value.sValue.size(); }
    // Called for every statement run while the execute type is 2.
    void setStatementCounter(std::function<void()> counter) { m_countStatement = std::move(counter); }

    // Read access for the host commands, the windows and tests.
    host::Session& session() { return m_session; }
    ValueSlot& valueSlot() { return m_value; }
    const Statement& statement(int32_t line) const { return m_statements[line]; }
    Statement& statement(int32_t line) { return m_statements[line]; }
    int32_t statementCount() const { return m_lngStatementCount; }
    const std::vector<FunctionEntry>& functions() const { return m_functions; }
    int32_t startLine() const { return m_lngStartLine; }
    int32_t endLine() const { return m_lngEndLine; }
    int32_t currentLine() const { return m_lngCurrentLine; }
    int32_t callDepth() const { return m_lngCallDepth; }
    bool running() const { return m_blnRunning; }
    int16_t executeType() const { return m_intExecuteType; }

private:
    template <typename T>
    struct Variable {
        std::string sName;
        T value{};
    };
    // Where a name stands in each of the three tables; -1 where it does not.
    struct NameSlots {
        int32_t text = -1;
        int32_t lng = -1;
        int32_t dbl = -1;
    };

    void resetTables();
    void reserveTables(const std::string& code);
    void parseStatement(std::string_view buffer, int32_t& functionsSeen, int32_t& ordinalOfMain);
    void findJumps();
    bool runStatement();
    void ExecuteBuiltin();
    bool resolve(std::string& name);
    bool readLastPosition(const std::string& name, int32_t& value) const;
    NameSlots slotsOf(const std::string& name) const;
    int32_t appendVariable(const std::string& name, int32_t type);
    void applyToText(std::string& value, int32_t FUNCTION_ID);
    void applyToLong(int32_t& value, int32_t FUNCTION_ID);
    void applyToDouble(double& value, int32_t FUNCTION_ID);
    void runFunctionOfVariable(int32_t functionID);
    void runTextCommand(int32_t functionID);
    void runMessage();
    bool fitsTexts(size_t newSize) const;
    bool stopPending();
    bool copyText(std::string& to, const std::string& from);
    bool appendText(std::string& to, std::string_view piece);
    std::optional<std::string> replaceText(const std::string& text, const std::string& find, const std::string& with);

    host::Session& m_session;
    ExternalCommands* m_external = nullptr;
    std::function<void()> m_countStatement;

    std::vector<Statement> m_statements;  // [0] stays empty
    // The texts of all parameters, statement after statement. Reserved at
    // load for the most the text can hold, so it never moves while the
    // statements point into it.
    std::vector<std::string> m_parameterStore;
    int32_t m_lngStatementCount = 0;
    std::vector<FunctionEntry> m_functions;  // in script order
    int32_t m_lngStartLine = 1;
    int32_t m_lngEndLine = 0;
    int32_t m_lngCurrentLine = 1;
    std::vector<int32_t> m_callStack{0};  // [0] holds 0
    int32_t m_lngCallDepth = 0;
    bool m_blnRunning = false;
    int16_t m_intExecuteType = 0;

    std::vector<Variable<std::string>> m_stringVariables;  // [0] is the empty slot
    std::vector<Variable<int32_t>> m_longVariables;
    std::vector<Variable<double>> m_doubleVariables;
    std::unordered_map<std::string, NameSlots> m_names;
    ValueSlot m_value;
    size_t m_maxTextBytes = 2147483647;
    size_t m_maxTextMemory = kDefaultTextMemory;
    size_t m_textBytes = 0;  // held by the text variables
    // Set when a long piece of the statement in hand saw a stop: the step
    // then changes nothing.
    bool m_stepStopped = false;
};

}  // namespace tarvoke::engine
