#pragma once
// The module inside the runtime: the bytes of a shared object, with the
// picture reader's entry (as tarvoke-pictures.so has it) and one to show a
// message box in a process of its own.

#include <cstdint>

#include "platform/qimage/module.h"

extern "C" const unsigned char tarvoke_runtime_module_begin[];
extern "C" const unsigned char tarvoke_runtime_module_end[];

namespace tarvoke::runtime {

// Shows the box and returns when it is closed; argc and argv are the
// process's, for Qt.
inline constexpr const char* kShowMessageSymbol = "tarvoke_runtime_show_message";
using ShowMessage = void (*)(int argc, char** argv, uint32_t flags, const char* title, const char* text);

}  // namespace tarvoke::runtime
