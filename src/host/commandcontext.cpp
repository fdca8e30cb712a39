#include "host/commandcontext.h"

namespace tarvoke::host {

std::string CommandContext::raw(int n) const {
    if (m_line < 1 || m_line > m_engine.statementCount() || n < 1 || n > 8) return {};
    return m_engine.statement(m_line).sParameter[n - 1];
}

std::string CommandContext::text(int n) const { return m_engine.GetVariableAsString(raw(n)); }

std::optional<std::string> CommandContext::optionalText(int n) const {
    const std::string rawText = raw(n);
    if (rawText.empty()) return std::nullopt;
    return m_engine.GetVariableAsString(rawText);
}

}  // namespace tarvoke::host
