#include "app/filesave.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarvoke::app {

namespace {

std::string reason(int error) { return std::strerror(error); }

bool writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        bytes.remove_prefix(static_cast<size_t>(written));
    }
    return true;
}

// The mode a new file gets: the old file's, else 0666 less the umask.
mode_t modeFor(const std::string& path) {
    struct stat old {};
    if (::stat(path.c_str(), &old) == 0) return old.st_mode & 07777;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

}  // namespace

std::optional<std::string> writeFileReplacing(const std::string& path, std::string_view bytes) {
    struct stat target {};
    if (::stat(path.c_str(), &target) == 0 && S_ISDIR(target.st_mode)) return reason(EISDIR);

    std::string temporary = path + ".XXXXXX";
    const int fd = ::mkstemp(temporary.data());
    if (fd < 0) return reason(errno);
    int error = 0;
    if (::fchmod(fd, modeFor(path)) != 0 || !writeAll(fd, bytes) || ::fsync(fd) != 0) error = errno;
    if (::close(fd) != 0 && error == 0) error = errno;
    if (error == 0 && ::rename(temporary.c_str(), path.c_str()) != 0) error = errno;
    if (error == 0) return std::nullopt;
    ::unlink(temporary.c_str());
    return reason(error);
}

}  // namespace tarvoke::app
