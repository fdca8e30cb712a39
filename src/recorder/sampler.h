#pragma once
// The recording sampler: one tick compares the buttons, the cursor and the
// keys with what was last written and writes one script line per change,
// each after a Pause line with the time since the line before.

#include <functional>
#include <optional>
#include <string>

#include "engine/commands.h"
#include "platform/input.h"
#include "platform/keystate.h"
#include "recorder/recorderstate.h"

namespace tarvoke::recorder {

// What the hotkeys need from the rest of the program.
struct SamplerHooks {
    std::function<std::string()> windowSelection;            // Ctrl+4: the lines that select the window
    std::function<void()> captureTemp;                       // Ctrl+5: capture the screen privately
    std::function<uint32_t(platform::Point)> tempPixel;      // Ctrl+5: a pixel of that capture
};

class Sampler {
public:
    Sampler(RecorderState& state, FormState& form, Form kind, platform::KeyState& keys, platform::Input& input,
            const Stopwatches& clocks, SamplerHooks hooks)
        : m_state(state), m_form(form), m_kind(kind), m_keys(keys), m_input(input), m_clocks(clocks),
          m_hooks(std::move(hooks)) {}

    // One comparison of everything with what was last written. pointer is
    // where the pointer was at the change that led to this tick, when the
    // platform knows; else the cursor is read now.
    void tick(std::optional<platform::Point> pointer = std::nullopt);
    void addLine(const std::string& line);

private:
    platform::Point cursor();
    // The button's four commands: down, up, and the two with a position.
    struct ButtonCommands {
        engine::Command down, up, downEx, upEx;
    };
    void sampleButton(uint8_t vk, bool& flag, const ButtonCommands& commands);
    void sampleMove();
    void plainKey(uint8_t vk);
    void plainKeys(uint8_t first, uint8_t last);
    bool hotkey(uint8_t vk);  // false: the tick ends here
    void ctrlKey(uint8_t vk);
    void actOnHotkey(uint8_t vk);
    void sampleColour();

    RecorderState& m_state;
    FormState& m_form;
    Form m_kind;
    platform::KeyState& m_keys;
    platform::Input& m_input;
    const Stopwatches& m_clocks;
    SamplerHooks m_hooks;
    std::optional<platform::Point> m_pointer;  // of the tick in hand
};

// Takes the last "KeyDown(163);" out of the text, else the last
// "KeyDown(162);", each with its line end; the Pause before it stays.
void removeLastCtrlDown(std::string& text);

// The start of a statement as a recording writes it: the command's name as
// scripts spell it, and "(".
inline std::string call(engine::Command command) { return std::string(engine::scriptName(command)) + "("; }

}  // namespace tarvoke::recorder
