#include "playback/correcttime.h"

#include "engine/commands.h"
#include "engine/numeric.h"
#include "engine/scripttext.h"
#include "host/timing.h"

namespace tarvoke::playback {

namespace {

constexpr std::string_view kPlayTimeWord = "origionalplaytime(";

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (engine::lowerAscii(a[i]) != engine::lowerAscii(b[i])) return false;
    return true;
}

double statementPlayTime(std::string_view statement) {
    if (!statement.starts_with(kPlayTimeWord)) return 0;
    // The last character is taken for the closing bracket, whatever it is.
    std::string_view argument = statement.substr(kPlayTimeWord.size());
    if (!argument.empty()) argument.remove_suffix(1);
    if (!engine::isNumericText(argument)) return 0;
    return engine::textToDouble(argument).value_or(0);
}

}  // namespace

double origionalPlayTime(std::string_view lowerText) {
    double sum = 0;
    std::string statement;
    for (char c : lowerText) {
        if (c == '\r' || c == '\n') continue;
        if (c != ';') {
            statement += c;
            continue;
        }
        sum += statementPlayTime(statement);
        statement.clear();
    }
    return sum;
}

double measuredTime(int32_t seconds, int32_t milliseconds) {
    const std::string text = std::to_string(seconds) + "." + std::to_string(milliseconds);
    return engine::textToDouble(text).value_or(0);
}

double newPausePercent(double measured, double recorded) {
    if (recorded == 0) return 100;
    const double quotient = measured / recorded;
    return quotient == 1 ? 100 : quotient * 100;
}

std::string replacePausePercent(std::string_view text, std::string_view oldPercent, double percent) {
    const std::string name(engine::scriptName(engine::Command::SetPausePercent));
    const std::string find = name + "(" + std::string(oldPercent) + ");";
    const std::string with = name + "(" + engine::doubleToText(percent) + ");";
    std::string result;
    result.reserve(text.size());
    size_t at = 0;
    while (at < text.size()) {
        if (text.size() - at >= find.size() && equalsIgnoringCase(text.substr(at, find.size()), find)) {
            result += with;
            at += find.size();
        } else {
            result += text[at++];
        }
    }
    return result;
}

std::string timeReport(const Calibration& calibration) {
    return "Time took: " + engine::doubleToText(calibration.measured) +
           " seconds out of Origional Play Time: " + engine::doubleToText(calibration.recorded) + " seconds";
}

void TimedRun::countStatements(std::function<void(int32_t)> shown) {
    m_shown = std::move(shown);
    m_engine.setStatementCounter([this] { countOne(); });
    m_session.onWhiteDebugPercent = [this] { countOne(); };
}

void TimedRun::countOne() {
    ++m_statements;
    if (m_shown) m_shown(m_statements);
}

void TimedRun::begin(const std::string& scriptText) {
    m_seconds = 0;
    m_statements = 0;
    m_recorded = origionalPlayTime(engine::lowerAscii(scriptText));
    host::startRunClock(m_session);
}

void TimedRun::secondTick() {
    host::readRunClock(m_session);
    ++m_seconds;
    host::startRunClock(m_session);
}

void TimedRun::run(std::string& scriptText, engine::ExecuteType type) { m_playback.runTimed(scriptText, type); }

Calibration TimedRun::finish() {
    const int32_t milliseconds = host::readRunClock(m_session);
    Calibration calibration;
    calibration.measured = measuredTime(m_seconds, milliseconds);
    calibration.recorded = m_recorded;
    calibration.percent = newPausePercent(calibration.measured, m_recorded);
    return calibration;
}

std::string TimedRun::rewrite(std::string_view text, const Calibration& calibration) const {
    return replacePausePercent(text, m_session.pausePercent, calibration.percent);
}

}  // namespace tarvoke::playback
