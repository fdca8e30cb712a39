#pragma once
// A compiled program: a copy of the runtime whose last byte is replaced by
// the repeat flag, followed by the script's compact body and the runtime's
// length L as 32-bit little-endian:
//
//   offset 0      L - 1 bytes  the runtime, unchanged
//   offset L - 1  1 byte       "1" repeat until stopped, "0" one run
//   offset L      B bytes      the body, no terminator
//   offset L + B  4 bytes      L
//
// There is no magic number: the last four bytes are the only way in.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarvoke::playback {

// The runtime, in the folder of the programs.
inline constexpr const char* kRuntimeFileName = "Compiler.dll";

inline constexpr char kRepeatFlag = '1';
inline constexpr char kOnceFlag = '0';

// The body: line breaks removed, then outside double quotes blanks dropped
// and letters lower-cased; the quotes themselves are dropped. Tabs and
// comments stay.
std::string compactScript(std::string_view text);

// The bytes of the program made from runtime (which must not be empty).
std::string compiledProgram(std::string_view runtime, bool repeat, std::string_view body);

struct CompiledTail {
    char flag = kOnceFlag;
    std::string body;
};
// The tail of the file at path, reading only it; nothing when the file
// cannot be read or its length field is out of range.
std::optional<CompiledTail> readCompiledTail(const std::string& path);
// The same for bytes held in memory.
std::optional<CompiledTail> compiledTailOf(std::string_view file);

// The body for an editor: a line break behind every ";".
std::string bodyAsLines(std::string_view body);

// Compiles script behind the runtime file into target, written beside it
// and renamed over it, executable. Empty on success, else the reason.
std::string compileScript(const std::string& runtimePath, const std::string& target, std::string_view script,
                          bool repeat);

}  // namespace tarvoke::playback
