#pragma once
// How a command answers the script: through the variable named by the raw
// text of its first parameter, in the form of that variable's type. These
// are the only host commands that write a script variable.

#include <cstdint>

#include "engine/sc.h"

namespace tarvoke::host {

// A true-or-false answer: text "True"/"False", and in a numeric variable 0
// when the test passed and 1 when it failed. A name that is no variable yet
// becomes a text variable.
void answerTest(engine::SC& engine, int32_t lngLine, bool passed);

// A measured number: a text variable receives it as text, a 32-bit one
// rounded (ties to even; a value that does not fit leaves it), a 64-bit one
// as it is. measure runs only after the variable's type is known.
template <typename Measure>
void answerMeasure(engine::SC& engine, int32_t lngLine, Measure&& measure);

// Fills the value slot from the raw p1 and returns the type it found.
int32_t prepareAnswer(engine::SC& engine, int32_t lngLine);
// Puts value into the slot in the form of type and sets the variable.
void storeMeasure(engine::SC& engine, int32_t lngLine, int32_t type, double value);

template <typename Measure>
void answerMeasure(engine::SC& engine, int32_t lngLine, Measure&& measure) {
    const int32_t type = prepareAnswer(engine, lngLine);
    const auto value = measure();  // std::optional<double>: empty when the measuring step failed
    if (value) storeMeasure(engine, lngLine, type, *value);
}

}  // namespace tarvoke::host
