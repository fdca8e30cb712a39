// The program dump: the statements as they were parsed, the functions found
// and the variables held, for a script writer to see what the load made.

#include "engine/commands.h"
#include "engine/numeric.h"
#include "engine/sc.h"

namespace tarvoke::engine {
namespace {

// A dump can be larger than the memory left (a gigabyte of texts), so it is
// handed out a piece at a time, a piece being about this long.
constexpr size_t kPieceBytes = size_t{1} << 16;

}  // namespace

bool SC::writeDebug(const std::function<void(std::string_view)>& write) const {
    std::string piece;
    // Hands over what has gathered; false when a stop came.
    const auto flush = [&](bool always) {
        if (!always && piece.size() < kPieceBytes) return true;
        write(piece);
        piece.clear();
        return !m_environment.stopPending();
    };
    // A long text goes out as it stands, not through a copy.
    const auto text = [&](const std::string& value) {
        if (value.size() < kPieceBytes) {
            piece += value;
            return flush(false);
        }
        if (!flush(true)) return false;
        for (size_t done = 0; done < value.size(); done += kPieceBytes) {
            write(std::string_view(value).substr(done, kPieceBytes));
            if (m_environment.stopPending()) return false;
        }
        return true;
    };
    piece = "Printing Code:\n";
    for (int32_t line = 1; line <= m_statementCount; ++line) {
        const Statement& statement = m_statements[line];
        const std::string_view name = commandName(statement.number);
        piece += "Command: ";
        piece += name.empty() ? std::string_view("UNKNOWN COMMAND") : name;
        piece += "; Parameters: ";
        // Seven parameters, one blank between them; the eighth is not printed.
        for (size_t k = 0; k < 7; ++k) {
            if (k > 0) piece += ' ';
            piece += statement.parameters[k];
        }
        piece += '\n';
        if (!flush(false)) return false;
    }
    piece += "\nPrinting Found Functions:\n";
    for (const FunctionEntry& entry : m_functions) {
        piece += "Function: " + entry.name + ", line: " + std::to_string(entry.line) + "\n";
        if (!flush(false)) return false;
    }
    piece += "\nPrinting Found Variables:\n";
    for (size_t i = 1; i < m_stringVariables.size(); ++i) {
        piece += "String: " + m_stringVariables[i].name + ", value: ";
        if (!text(m_stringVariables[i].value)) return false;
        piece += '\n';
    }
    for (size_t i = 1; i < m_longVariables.size(); ++i) {
        piece += "Long: " + m_longVariables[i].name + ", value: " + std::to_string(m_longVariables[i].value) + "\n";
        if (!flush(false)) return false;
    }
    for (size_t i = 1; i < m_doubleVariables.size(); ++i) {
        piece += "Double: " + m_doubleVariables[i].name + ", value: " + doubleToText(m_doubleVariables[i].value) + "\n";
        if (!flush(false)) return false;
    }
    piece += "\n\n\n";
    return flush(true);
}

std::string SC::getDebug() const {
    std::string text;
    writeDebug([&text](std::string_view piece) { text += piece; });
    return text;
}

}  // namespace tarvoke::engine
