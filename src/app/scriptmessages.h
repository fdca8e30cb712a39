#pragma once
// The message boxes of scripts (MsgBox and its styles), as Qt message boxes.

#include "platform/messagebox.h"

namespace tarvoke::app {

class ScriptMessageBoxes : public platform::MessageBoxes {
public:
    void show(uint32_t flags, const std::string& title, const std::string& text) override;
};

}  // namespace tarvoke::app
