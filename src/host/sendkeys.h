#pragma once
// The key-string notation of SendKeys: "+" Shift, "^" Ctrl, "%" Alt, "~"
// Enter, parentheses group what a modifier applies to, braces hold a named
// key, a literal special or a repeat count ("{LEFT 3}", "{a 5}", "{+}").
// Every other character is typed as text.

#include <optional>
#include <string_view>
#include <vector>

#include "platform/input.h"

namespace tarvoke::host {

// The strokes of a key string in the order they are made, or nothing when
// the string is malformed (an unknown name, an unbalanced brace or
// parenthesis, a modifier with nothing to apply to): a rejected string is
// rejected whole, so nothing of it is sent.
std::optional<std::vector<platform::KeyStroke>> parseSendKeys(std::string_view keys);

}  // namespace tarvoke::host
