// The program dump: the statements as they were parsed, the functions found
// and the variables held, for a script writer to see what the load made.

#include "engine/numeric.h"
#include "engine/sc.h"

namespace tarvoke::engine {

std::string SC::GetDebug() const {
    std::string text = "Printing Code:\n";
    for (int32_t line = 1; line <= m_lngStatementCount; ++line) {
        const Statement& statement = m_statements[line];
        text += "Command: " + ReturnFunctionName(statement.functionID) + "; Parameters: ";
        // Seven parameters, one blank between them; the eighth is not printed.
        for (size_t k = 0; k < 7; ++k) {
            if (k > 0) text += ' ';
            text += statement.sParameter[k];
        }
        text += '\n';
    }
    text += "\nPrinting Found Functions:\n";
    for (const FunctionEntry& entry : m_functions)
        text += "Function: " + entry.sName + ", line: " + std::to_string(entry.lngLine) + "\n";
    text += "\nPrinting Found Variables:\n";
    for (size_t i = 1; i < m_stringVariables.size(); ++i)
        text += "String: " + m_stringVariables[i].sName + ", value: " + m_stringVariables[i].value + "\n";
    for (size_t i = 1; i < m_longVariables.size(); ++i)
        text += "Long: " + m_longVariables[i].sName + ", value: " + std::to_string(m_longVariables[i].value) + "\n";
    for (size_t i = 1; i < m_doubleVariables.size(); ++i)
        text += "Double: " + m_doubleVariables[i].sName + ", value: " + doubleToText(m_doubleVariables[i].value) + "\n";
    text += "\n\n\n";
    return text;
}

}  // namespace tarvoke::engine
