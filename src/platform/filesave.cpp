#include "platform/filesave.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace tarvoke::platform {
namespace {

SaveResult failed(int error) { return {SaveOutcome::Failed, error != 0 ? error : EIO}; }

// umask() can only be read by setting it, which for that moment changes it
// for every thread of the program; Linux shows it in /proc as well.
mode_t currentUmask() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("Umask:", 0) == 0) return static_cast<mode_t>(std::strtoul(line.c_str() + 6, nullptr, 8));
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return mask;
}

// A short fixed name, so that a target whose own name is near the length
// limit can still be saved.
std::string temporaryPattern(const std::string& path) {
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
    return folder + ".tarvoke-XXXXXX";
}

int writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        if (written == 0) return EIO;  // nothing taken and no reason given: do not spin
        bytes.remove_prefix(static_cast<size_t>(written));
    }
    return 0;
}

// 0, or the errno of the first step that failed.
int fillTemporary(int fd, std::string_view bytes, const SaveOptions& options, const struct stat* replaced) {
    if (options.mode) {
        ::fchmod(fd, *options.mode);  // best effort: see SaveOptions::mode
    } else {
        const mode_t mode = replaced ? replaced->st_mode & 07777 : newFileMode();
        if (::fchmod(fd, mode) != 0) return errno;
    }
    if (const int error = writeAll(fd, bytes); error != 0) return error;
    if (::fsync(fd) != 0) return errno;
    return 0;
}

int moveIntoPlace(const std::string& temporary, const std::string& path, Existing existing) {
    const int moved = existing == Existing::Replace
                          ? ::rename(temporary.c_str(), path.c_str())
                          : ::renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE);
    return moved == 0 ? 0 : errno;
}

}  // namespace

std::string SaveResult::reason() const { return std::strerror(error); }

mode_t newFileMode() { return 0666 & ~currentUmask(); }

SaveResult saveFile(const std::string& path, std::string_view bytes, const SaveOptions& options) {
    struct stat target {};
    const bool targetThere = ::stat(path.c_str(), &target) == 0;
    // Renaming over a folder fails as well, but only after all was written.
    if (options.existing == Existing::Replace && targetThere && S_ISDIR(target.st_mode)) return failed(EISDIR);

    std::string temporary = temporaryPattern(path);
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) return failed(errno);
    int error = fillTemporary(fd, bytes, options, targetThere ? &target : nullptr);
    if (::close(fd) != 0 && error == 0) error = errno;
    if (error == 0) error = moveIntoPlace(temporary, path, options.existing);
    if (error == 0) return {};
    ::unlink(temporary.c_str());
    // Of the steps after mkostemp only the rename can meet EEXIST: with Keep,
    // the target is there.
    if (error == EEXIST && options.existing == Existing::Keep) return {SaveOutcome::TargetExists, EEXIST};
    return failed(error);
}

}  // namespace tarvoke::platform
