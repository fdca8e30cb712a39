#include "platform/fileread.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace tarvoke::platform {
namespace {

constexpr size_t kPiece = size_t{1} << 20;

ReadResult failure(ReadOutcome outcome, int error = 0) { return {outcome, error, {}}; }

ReadResult readAll(int fd, const struct stat& info, const ReadLimits& limits) {
    ReadResult result;
    // Files in /proc say 0 and have more; the size is only a hint.
    if (S_ISREG(info.st_mode) && info.st_size > 0) {
        if (static_cast<unsigned long long>(info.st_size) > limits.maxBytes) return failure(ReadOutcome::TooLarge);
        result.bytes.reserve(static_cast<size_t>(info.st_size));
    }
    size_t used = 0;
    for (;;) {
        if (limits.stopped && limits.stopped()) return failure(ReadOutcome::Stopped);
        if (result.bytes.size() - used < kPiece) result.bytes.resize(used + kPiece);
        const ssize_t got = ::read(fd, result.bytes.data() + used, result.bytes.size() - used);
        if (got < 0) {
            if (errno == EINTR) continue;
            return failure(ReadOutcome::Failed, errno);
        }
        if (got == 0) break;
        used += static_cast<size_t>(got);
        if (used > limits.maxBytes) return failure(ReadOutcome::TooLarge);
    }
    result.bytes.resize(used);
    return result;
}

}  // namespace

std::string ReadResult::reason() const {
    switch (outcome) {
    case ReadOutcome::Read: return {};
    case ReadOutcome::NotRegular: return "it is no regular file";
    case ReadOutcome::Folder: return "it is a folder";
    case ReadOutcome::TooLarge: return "it is too large";
    case ReadOutcome::Stopped: return "stopped";
    case ReadOutcome::Failed: break;
    }
    return std::strerror(error != 0 ? error : EIO);
}

ReadResult readRegularFile(const std::string& path, const ReadLimits& limits) {
    // O_NONBLOCK: opening a FIFO without a writer must not wait for one.
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) return failure(errno == EISDIR ? ReadOutcome::Folder : ReadOutcome::Failed, errno);
    struct stat info {};
    ReadResult result;
    if (::fstat(fd, &info) != 0) result = failure(ReadOutcome::Failed, errno);
    else if (S_ISDIR(info.st_mode)) result = failure(ReadOutcome::Folder);
    else if (!S_ISREG(info.st_mode)) result = failure(ReadOutcome::NotRegular);
    else result = readAll(fd, info, limits);
    ::close(fd);
    return result;
}

ReadResult readStandardInput(const ReadLimits& limits) {
    struct stat info {};
    if (::fstat(STDIN_FILENO, &info) != 0) return failure(ReadOutcome::Failed, errno);
    if (S_ISDIR(info.st_mode)) return failure(ReadOutcome::Folder);
    const bool readable = S_ISREG(info.st_mode) || S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode) ||
                          ::isatty(STDIN_FILENO);
    if (!readable) return failure(ReadOutcome::NotRegular);
    return readAll(STDIN_FILENO, info, limits);
}

}  // namespace tarvoke::platform
