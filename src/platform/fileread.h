#pragma once
// Reading a whole file that the user named (a script, a picture, the
// settings) without ever waiting on it: only a regular file is read. A FIFO,
// a device or a folder is refused as unreadable before a byte is read, since
// a read from it could block forever or never end (/dev/zero).

#include <cstddef>
#include <functional>
#include <string>

namespace tarvoke::platform {

enum class ReadOutcome { Read, NotRegular, Folder, TooLarge, Stopped, Failed };

struct ReadResult {
    ReadOutcome outcome = ReadOutcome::Read;
    int error = 0;  // the errno of the step that failed
    std::string bytes;

    explicit operator bool() const { return outcome == ReadOutcome::Read; }
    // Why the file could not be read, in a few words ("it is a folder",
    // "No such file or directory").
    std::string reason() const;
};

struct ReadLimits {
    // A file longer than this is refused (TooLarge), without reading the rest.
    size_t maxBytes = static_cast<size_t>(-1);
    // Looked at between pieces of a long read; true ends it (Stopped).
    std::function<bool()> stopped;
};

// The largest script either program reads.
constexpr size_t kMaxScriptBytes = size_t{256} << 20;
// The largest picture file read.
constexpr size_t kMaxPictureBytes = size_t{512} << 20;

ReadResult readRegularFile(const std::string& path, const ReadLimits& limits = {});

// Standard input: a regular file, a pipe, a socket or a terminal; a folder,
// another device or a closed descriptor is refused.
ReadResult readStandardInput(const ReadLimits& limits = {});

}  // namespace tarvoke::platform
