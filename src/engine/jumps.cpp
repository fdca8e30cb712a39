// Jump targets found once at load. The loop needs, for each if, else, while
// and endwhile, the line where counting the nesting at run time would stop.
// Because the count never falls below 0 before the stop, the count at a line
// is a difference of prefix sums, so every target is found in one pass.

#include <unordered_map>

#include "engine/commands.h"
#include "engine/sc.h"

namespace tarvoke::engine {
namespace {

constexpr int32_t kIf = static_cast<int32_t>(Command::If);
constexpr int32_t kElse = static_cast<int32_t>(Command::Else);
constexpr int32_t kEndIf = static_cast<int32_t>(Command::EndIf);
constexpr int32_t kWhile = static_cast<int32_t>(Command::While);
constexpr int32_t kEndWhile = static_cast<int32_t>(Command::EndWhile);
constexpr int32_t kCall = static_cast<int32_t>(Command::Call);

// For each depth value, the nearest line of one kind seen so far in a walk.
class NearestByDepth {
public:
    explicit NearestByDepth(int32_t count) : m_offset(count + 1), m_lines(2 * static_cast<size_t>(count) + 3, SC::kEndsRun) {}
    int32_t& at(int32_t depth) { return m_lines[static_cast<size_t>(depth + m_offset)]; }

private:
    int32_t m_offset;
    std::vector<int32_t> m_lines;
};

}  // namespace

void SC::findJumps() {
    const int32_t count = m_statementCount;
    auto id = [this](int32_t line) { return m_statements[line].number; };

    // Forward skips (if, else, while) examine lines L+1 .. count-1 only: a
    // skip ends the run before it would look at the last statement.
    // ifDepth[j]: ifs minus endifs on lines before j; whileDepth likewise.
    std::vector<int32_t> ifDepth(count + 2, 0), whileDepth(count + 2, 0);
    for (int32_t j = 1; j <= count; ++j) {
        ifDepth[j + 1] = ifDepth[j] + (id(j) == kIf) - (id(j) == kEndIf);
        whileDepth[j + 1] = whileDepth[j] + (id(j) == kWhile) - (id(j) == kEndWhile);
    }
    NearestByDepth elseOrEndIf(count), endIf(count), endWhile(count);
    for (int32_t line = count; line >= 1; --line) {
        Statement& statement = m_statements[line];
        if (statement.number == kIf) statement.jump = elseOrEndIf.at(ifDepth[line + 1]);
        if (statement.number == kElse) statement.jump = endIf.at(ifDepth[line + 1]);
        if (statement.number == kWhile) statement.jump = endWhile.at(whileDepth[line + 1]);
        if (line == count) continue;
        if (statement.number == kElse || statement.number == kEndIf) elseOrEndIf.at(ifDepth[line]) = line;
        if (statement.number == kEndIf) endIf.at(ifDepth[line]) = line;
        if (statement.number == kEndWhile) endWhile.at(whileDepth[line]) = line;
    }

    // The backward skip of endwhile stops at the nearest while above it with
    // as many endwhiles as whiles between them. openWhiles: endwhiles minus
    // whiles on lines up to and including j.
    NearestByDepth whileAbove(count);
    int32_t openWhiles = 0;
    for (int32_t line = 1; line <= count; ++line) {
        Statement& statement = m_statements[line];
        if (statement.number == kEndWhile) statement.jump = whileAbove.at(openWhiles);
        openWhiles += (statement.number == kEndWhile) - (statement.number == kWhile);
        if (statement.number == kWhile) whileAbove.at(openWhiles) = line;
    }

    // call enters the first function of that exact name.
    std::unordered_map<std::string, int32_t> firstFunction;
    for (const FunctionEntry& entry : m_functions) firstFunction.emplace(entry.name, entry.line);
    for (int32_t line = 1; line <= count; ++line) {
        Statement& statement = m_statements[line];
        if (statement.number != kCall) continue;
        const auto found = firstFunction.find(statement.parameters[0]);
        statement.jump = found == firstFunction.end() ? kEndsRun : found->second;
    }
}

}  // namespace tarvoke::engine
