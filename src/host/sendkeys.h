#pragma once
// The key-string notation of SendKeys: "+" Shift, "^" Ctrl, "%" Alt, "~"
// Enter, parentheses group what a modifier applies to, braces hold a named
// key, a literal special or a repeat count ("{LEFT 3}", "{a 5}", "{+}").
// Every other character is typed as text.

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/input.h"

namespace tarvoke::host {

// Whether a key string is well formed. A malformed one (an unknown name, an
// unbalanced brace or parenthesis, a modifier with nothing to apply to) is
// rejected whole, so nothing of it is sent.
bool acceptsSendKeys(std::string_view keys);

// The strokes of an accepted key string in the order they are made, a piece
// at a time. The string must outlive this.
class SendKeysParser;

class KeyStringStrokes final : public platform::KeyStrokes {
public:
    explicit KeyStringStrokes(std::string_view keys);
    ~KeyStringStrokes() override;
    bool next(std::vector<platform::KeyStroke>& piece) override;

private:
    std::unique_ptr<SendKeysParser> m_parser;
};

// All the strokes of a key string at once, or nothing when it is malformed;
// for short strings.
std::optional<std::vector<platform::KeyStroke>> parseSendKeys(std::string_view keys);

}  // namespace tarvoke::host
