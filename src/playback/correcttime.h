#pragma once
// Correct Time: a script runs once, timed, and the pause percentage in its
// text is rewritten so that the next play takes as long as the recording
// did. The hidden run and White Debug mode share all of this; the windows
// only wire the timers and the boxes.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "engine/sc.h"
#include "host/session.h"
#include "playback/playback.h"

namespace tarvoke::playback {

// The sum of the arguments of all OrigionalPlayTime statements of a
// lower-cased text. Every ";" ends a statement, also one inside quotes; a
// blank before the bracket hides the statement; text after the last ";" is
// never looked at; an argument that is no number adds nothing.
double origionalPlayTime(std::string_view lowerText);

// The measured time as the recorder writes OrigionalPlayTime: seconds, ".",
// milliseconds without leading zeros (12 s and 45 ms read 12.45).
double measuredTime(int32_t seconds, int32_t milliseconds);

// Measured over recorded, as a percentage; 100 when nothing was recorded or
// the two are equal.
double newPausePercent(double measured, double recorded);

// Every "SetPausePercent(" old ");" of text, in any case, becomes the literal
// with the new percentage.
std::string replacePausePercent(std::string_view text, std::string_view oldPercent, double percent);

struct Calibration {
    double measured = 0;
    double recorded = 0;
    double percent = 100;
};

// The words of the report box.
std::string timeReport(const Calibration& calibration);

// One timed run and its stopwatch. The seconds timer of the window calls
// secondTick() every second while the run goes on.
class TimedRun {
public:
    TimedRun(engine::SC& engine, Playback& playback, host::Session& session)
        : m_engine(engine), m_playback(playback), m_session(session) {}

    // White Debug mode shows how many statements the run went through; a
    // SetPausePercent counts twice. shown gets each new count.
    void countStatements(std::function<void(int32_t)> shown);

    // Resets the seconds, scans the text for the recorded time and starts
    // the stopwatch.
    void begin(const std::string& scriptText);
    void secondTick();
    // Loads and runs the script once with type; returns when the run ends
    // (its end, Stop, or Ctrl+1).
    void run(std::string& scriptText, engine::ExecuteType type);
    // Reads the stopwatch and calibrates on the time so far.
    Calibration finish();
    // The text with the percentage the run carried out replaced.
    std::string rewrite(std::string_view text, const Calibration& calibration) const;

    int32_t seconds() const { return m_seconds; }
    double recorded() const { return m_recorded; }
    int32_t statements() const { return m_statements; }

private:
    void countOne();

    engine::SC& m_engine;
    Playback& m_playback;
    host::Session& m_session;
    int32_t m_seconds = 0;
    double m_recorded = 0;
    int32_t m_statements = 0;
    std::function<void(int32_t)> m_shown;
};

}  // namespace tarvoke::playback
