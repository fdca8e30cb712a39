#pragma once
// Saving a file so that a failure never loses the old one: the bytes go to a
// new temporary file in the target's folder, reach the disk, and only then is
// that file renamed over the target. On every failure the temporary file is
// removed and whatever stood at the target is left as it was.

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
