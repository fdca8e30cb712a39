#pragma once
// SC, the script engine: loads a script text into statement and function
// tables, runs them, holds the variables and prints its state.
//
// Lines are 1-based indexes into the statement table and have nothing to do
// with the lines of the text.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/environment.h"
#include "engine/scripttext.h"
#include "engine/statement.h"

namespace tarvoke::engine {

struct FunctionEntry {
    std::string name;
    int32_t line = 0;
};

// The kind of a value, numbered as the declarations that make each kind.
enum class ValueKind : int32_t {
    Text = static_cast<int32_t>(Command::String),
    Long = static_cast<int32_t>(Command::Int),
    Double = static_cast<int32_t>(Command::Double),
};

// What a step does to a variable, numbered as the commands that do it.
enum class Operation : int32_t {
    Set = static_cast<int32_t>(Command::Set),
    Add = static_cast<int32_t>(Command::Add),
    Subtract = static_cast<int32_t>(Command::Subtract),
    Divide = static_cast<int32_t>(Command::Divide),
    Multiply = static_cast<int32_t>(Command::Multiply),
    Power = static_cast<int32_t>(Command::Power),
};

// The run's kind: Correct Time and White Debug keep setpausepercent's word,
// White Debug counts every statement run.
enum class ExecuteType : int16_t { Play = 0, CorrectTime = 1, WhiteDebug = 2 };

// The engine's one scratch value. A look-up writes the kind and the member of
// that kind only; the other two keep what they held.
struct ValueSlot {
    std::string text;
    int32_t integer = 0;
    double real = 0;
    ValueKind kind = ValueKind::Text;
};

class SC {
public:
    static constexpr int32_t kEndsRun = -1;
    // A Call deeper than this fails as a failed step does: nothing happens.
    static constexpr int32_t kMaxCallDepth = 100000;
    static constexpr size_t kDefaultTextMemory = size_t{1} << 30;

    explicit SC(Environment& environment);
    // Statements point into the engine's own parameter store.
    SC(const SC&) = delete;
    SC& operator=(const SC&) = delete;

    // Load. inputCode receives the normalised text.
    void initialize(std::string& inputCode, SourceForm form = SourceForm::Text);
    std::string getDebug() const;
    // The dump, piece after piece, without building it whole; false when a
    // stop came before its end.
    bool writeDebug(const std::function<void(std::string_view)>& write) const;
    void stopExecution();
    void pauseExecution();
    void execute();
    bool evaluate(const std::string& condition);
    void addSetVariable(const std::string& name, ValueKind kind, Operation operation);
    void getVariable(std::string& name);
    std::string getVariableAsString(const std::string& name) const;
    bool isExistingVariable(const std::string& name) const;
    void setExecuteType(ExecuteType type) { m_executeType = type; }
    static std::string hexToAscii(std::string& digits);

    // The longest text a variable holds, 2^31 - 1 bytes as the language's
    // texts; a step that would make a longer one fails. Tests lower it.
    void setMaxTextBytes(size_t bytes) { m_maxTextBytes = bytes; }
    // The most all texts may hold together: the variables and the value in
    // hand, and while a step works, the text it builds. A step beyond fails.
    void setMaxTextMemory(size_t bytes) { m_maxTextMemory = bytes; }
    size_t textMemory() const { return m_textBytes + m_value.text.size(); }
    // Called for every statement run in White Debug.
    void setStatementCounter(std::function<void()> counter) { m_countStatement = std::move(counter); }

    // Read access for the host commands, the windows and tests.
    ValueSlot& valueSlot() { return m_value; }
    const Statement& statement(int32_t line) const { return m_statements[line]; }
    int32_t statementCount() const { return m_statementCount; }
    int32_t startLine() const { return m_startLine; }
    int32_t endLine() const { return m_endLine; }
    int32_t currentLine() const { return m_currentLine; }
    int32_t callDepth() const { return m_callDepth; }
    bool running() const { return m_running; }
    ExecuteType executeType() const { return m_executeType; }

private:
    template <typename T>
    struct Variable {
        std::string name;
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
    void executeBuiltin();
    void runHostCommand(const HostRow& row);
    void storeAnswer(const Answer& answer, int32_t line);
    bool resolve(std::string& name);
    bool readLastPosition(const std::string& name, int32_t& value) const;
    NameSlots slotsOf(const std::string& name) const;
    int32_t appendVariable(const std::string& name, ValueKind kind);
    void applyToText(std::string& value, Operation operation);
    void applyToLong(int32_t& value, Operation operation);
    void applyToDouble(double& value, Operation operation);
    void runFunctionOfVariable(Command command);
    void runTextCommand(Command command);
    void runMessage();
    bool fitsTexts(size_t newSize) const;
    bool stopPending();
    bool copyText(std::string& to, const std::string& from);
    bool appendText(std::string& to, std::string_view piece);
    std::optional<std::string> replaceText(const std::string& text, const std::string& find, const std::string& with);

    Environment& m_environment;
    std::function<void()> m_countStatement;

    std::vector<Statement> m_statements;  // [0] stays empty
    // The texts of all parameters, statement after statement. Reserved at
    // load for the most the text can hold, so it never moves while the
    // statements point into it.
    std::vector<std::string> m_parameterStore;
    int32_t m_statementCount = 0;
    std::vector<FunctionEntry> m_functions;  // in script order
    int32_t m_startLine = 1;
    int32_t m_endLine = 0;
    int32_t m_currentLine = 1;
    std::vector<int32_t> m_callStack{0};  // [0] holds 0
    int32_t m_callDepth = 0;
    bool m_running = false;
    ExecuteType m_executeType = ExecuteType::Play;

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
