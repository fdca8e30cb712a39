#pragma once
// Saving a file so that a failure never loses the old one: the bytes go to a
// new file in the target's folder that has no name yet (O_TMPFILE), reach the
// disk, and only then is that file linked in under a name and renamed over
// the target. A save that fails or is killed leaves whatever stood at the
// target as it was and no file beside it. (A file system that refuses files
// without a name gets a named temporary file, removed on every failure.)
// Saving through a symbolic link replaces the file it leads to; the link
// stays.

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace tarvoke::platform {

// What happens to a file already at the target.
enum class Existing {
    Replace,  // it is replaced
    Keep,     // it stays, and the save fails with SaveOutcome::TargetExists
};

struct SaveOptions {
    Existing existing = Existing::Replace;
    // The saved file's permission bits. Without a value: those of the file it
    // replaces, else newFileMode(); a failure to set them fails the save, for
    // a replaced private file must not come back readable by all. With a
    // value: these bits, as far as the file system allows (FAT refuses most).
    std::optional<mode_t> mode;
};

enum class SaveOutcome { Saved, TargetExists, Failed };

struct SaveResult {
    SaveOutcome outcome = SaveOutcome::Saved;
    int error = 0;  // the errno of the step that failed; EEXIST for TargetExists

    explicit operator bool() const { return outcome == SaveOutcome::Saved; }
    // The system's words for error ("Permission denied").
    std::string reason() const;
};

// The bits open() gives a new file: 0666 less the umask.
mode_t newFileMode();

SaveResult saveFile(const std::string& path, std::string_view bytes, const SaveOptions& options = {});

}  // namespace tarvoke::platform
