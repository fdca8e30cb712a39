#include "platform/filesave.h"

#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

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

std::string folderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// A short fixed name, so that a target whose own name is near the length
// limit can still be saved.
std::string temporaryPattern(const std::string& path) { return folderOf(path) + "/.tarvoke-XXXXXX"; }

// Turns path into the file its chain of symbolic links ends in (the file
// itself when it is no link); 0, or the errno that open() would give.
int followLinks(std::string& path) {
    for (int hops = 0; hops < 40; ++hops) {  // the kernel's own limit before ELOOP
        struct stat info {};
        if (::lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return 0;
        char target[PATH_MAX];
        const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
        if (length < 0) return errno;
        if (static_cast<size_t>(length) == sizeof target) return ENAMETOOLONG;
        const std::string next(target, static_cast<size_t>(length));
        path = next.starts_with('/') ? next : folderOf(path) + "/" + next;
    }
    return ELOOP;
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

SaveResult outcomeOf(int error, Existing existing) {
    if (error == 0) return {};
    // Of the steps after the temporary file exists only the last one can meet
    // EEXIST: with Keep, the target is there.
    if (error == EEXIST && existing == Existing::Keep) return {SaveOutcome::TargetExists, EEXIST};
    return failed(error);
}

// Only where the file system refuses a file without a name: a named
// temporary file, which a killed save leaves behind.
SaveResult saveThroughNamedFile(const std::string& path, std::string_view bytes, const SaveOptions& options,
                                const struct stat* replaced) {
    std::string temporary = temporaryPattern(path);
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) return failed(errno);
    int error = fillTemporary(fd, bytes, options, replaced);
    if (::close(fd) != 0 && error == 0) error = errno;
    if (error == 0) error = moveIntoPlace(temporary, path, options.existing);
    if (error != 0) ::unlink(temporary.c_str());
    return outcomeOf(error, options.existing);
}

// A file that is in no folder yet (O_TMPFILE), in the target's folder so that
// it can be linked there; -1 with errno set when it cannot be made.
int openUnnamed(const std::string& path) {
    return ::open(folderOf(path).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
}

bool unnamedRefused(int error) { return error == EOPNOTSUPP || error == EISDIR || error == EINVAL; }

// A name for the moment between linking the file and renaming it over the
// target, not taken by any other file.
int linkUnderTemporaryName(const char* file, const std::string& path, std::string& temporary) {
    static const char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary = temporaryPattern(path);
        unsigned char random[6];
        if (::getrandom(random, sizeof random, 0) != sizeof random) return errno != 0 ? errno : EIO;
        for (size_t i = 0; i < sizeof random; ++i)
            temporary[temporary.size() - sizeof random + i] = letters[random[i] % (sizeof letters - 1)];
        if (::linkat(AT_FDCWD, file, AT_FDCWD, temporary.c_str(), AT_SYMLINK_FOLLOW) == 0) return 0;
        if (errno != EEXIST) return errno;
    }
    return EEXIST;
}

// Gives the unnamed file its name. A new name is made at once; an existing
// one is replaced by a rename, so the file has a temporary name only between
// two system calls, never while it is written. Returns 0 or an errno.
int linkIntoPlace(int fd, const std::string& path, Existing existing) {
    const std::string file = "/proc/self/fd/" + std::to_string(fd);
    if (::linkat(AT_FDCWD, file.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0) return 0;
    if (errno != EEXIST || existing == Existing::Keep) return errno;
    std::string temporary;
    if (const int error = linkUnderTemporaryName(file.c_str(), path, temporary); error != 0) return error;
    const int error = moveIntoPlace(temporary, path, existing);
    if (error != 0) ::unlink(temporary.c_str());
    return error;
}

}  // namespace

std::string SaveResult::reason() const { return std::strerror(error); }

mode_t newFileMode() { return 0666 & ~currentUmask(); }

SaveResult saveFile(const std::string& asked, std::string_view bytes, const SaveOptions& options) {
    std::string path = asked;
    // A link to the file is kept, and the file it leads to replaced. With
    // Keep, the link is what is there.
    if (options.existing == Existing::Replace)
        if (const int error = followLinks(path); error != 0) return failed(error);
    struct stat target {};
    const bool targetThere = ::stat(path.c_str(), &target) == 0;
    // Renaming over a folder fails as well, but only after all was written.
    if (options.existing == Existing::Replace && targetThere && S_ISDIR(target.st_mode)) return failed(EISDIR);
    const struct stat* replaced = targetThere ? &target : nullptr;

    const int fd = openUnnamed(path);
    if (fd < 0) {
        if (unnamedRefused(errno)) return saveThroughNamedFile(path, bytes, options, replaced);
        return failed(errno);
    }
    int error = fillTemporary(fd, bytes, options, replaced);
    if (error == 0) error = linkIntoPlace(fd, path, options.existing);
    ::close(fd);  // the bytes are on the disk by now, or the save has failed
    // Without /proc the file cannot be linked: write it again under a name.
    if (error == ENOENT && ::access("/proc/self/fd", F_OK) != 0)
        return saveThroughNamedFile(path, bytes, options, replaced);
    return outcomeOf(error, options.existing);
}

}  // namespace tarvoke::platform
