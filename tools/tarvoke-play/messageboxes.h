#pragma once
// Message boxes of the script language as Qt message boxes.

#include "platform/messagebox.h"

namespace tarvoke::player {

class QtMessageBoxes : public platform::MessageBoxes {
public:
    void show(uint32_t flags, const std::string& title, const std::string& text) override;
};

}  // namespace tarvoke::player
