#include "playback/compiledscript.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/fileread.h"
#include "platform/filesave.h"

namespace tarvoke::playback {
namespace {

constexpr size_t kLengthBytes = 4;
// Larger runtimes and scripts do not exist; the limit keeps a stray file
// from being read whole.
constexpr size_t kMaxRuntimeBytes = size_t{256} << 20;

uint32_t littleEndian(const unsigned char* bytes) {
    return uint32_t{bytes[0]} | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}

// L is in range when the runtime (at least its flag byte) and the length
// field fit in the file.
bool lengthInRange(uint64_t length, uint64_t fileSize) {
    return length >= 1 && fileSize >= kLengthBytes && length <= fileSize - kLengthBytes;
}

bool readAt(int fd, char* into, size_t count, off_t offset) {
    while (count > 0) {
        const ssize_t got = ::pread(fd, into, count, offset);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        into += got;
        count -= static_cast<size_t>(got);
        offset += got;
    }
    return true;
}

}  // namespace

std::string compactScript(std::string_view text) {
    std::string body;
    body.reserve(text.size());
    bool inQuotes = false;
    for (char c : text) {
        if (c == '\n' || c == '\r') continue;
        if (c == '"') inQuotes = !inQuotes;
        else if (inQuotes) body += c;
        else if (c != ' ') body += (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c;
    }
    return body;
}

std::string compiledProgram(std::string_view runtime, bool repeat, std::string_view body) {
    const auto length = static_cast<uint32_t>(runtime.size());
    std::string program(runtime.substr(0, runtime.size() - 1));
    program.reserve(runtime.size() + body.size() + kLengthBytes);
    program += repeat ? kRepeatFlag : kOnceFlag;
    program += body;
    for (int shift = 0; shift < 32; shift += 8) program += static_cast<char>((length >> shift) & 0xff);
    return program;
}

std::optional<CompiledTail> compiledTailOf(std::string_view file) {
    if (file.size() < kLengthBytes) return std::nullopt;
    const uint32_t length = littleEndian(reinterpret_cast<const unsigned char*>(file.data() + file.size() - kLengthBytes));
    if (!lengthInRange(length, file.size())) return std::nullopt;
    return CompiledTail{file[length - 1], std::string(file.substr(length, file.size() - kLengthBytes - length))};
}

std::optional<CompiledTail> readCompiledTail(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return std::nullopt;
    std::optional<CompiledTail> tail;
    struct stat status {};
    unsigned char field[kLengthBytes];
    if (::fstat(fd, &status) == 0 && S_ISREG(status.st_mode) &&
        readAt(fd, reinterpret_cast<char*>(field), kLengthBytes, status.st_size - static_cast<off_t>(kLengthBytes))) {
        const uint64_t size = static_cast<uint64_t>(status.st_size);
        const uint32_t length = littleEndian(field);
        if (lengthInRange(length, size)) {
            CompiledTail read;
            read.body.resize(size - kLengthBytes - length);
            if (readAt(fd, &read.flag, 1, length - 1) && readAt(fd, read.body.data(), read.body.size(), length))
                tail = std::move(read);
        }
    }
    ::close(fd);
    return tail;
}

std::string bodyAsLines(std::string_view body) {
    std::string lines;
    lines.reserve(body.size() + body.size() / 8);
    for (char c : body) {
        lines += c;
        if (c == ';') lines += '\n';
    }
    return lines;
}

std::string compileScript(const std::string& runtimePath, const std::string& target, std::string_view script,
                          bool repeat) {
    platform::ReadLimits limits;
    limits.maxBytes = kMaxRuntimeBytes;
    const platform::ReadResult runtime = platform::readRegularFile(runtimePath, limits);
    if (!runtime) return "cannot read the runtime '" + runtimePath + "': " + runtime.reason();
    if (runtime.bytes.empty()) return "the runtime '" + runtimePath + "' is empty";
    platform::SaveOptions options;
    // Executable wherever it is readable, as the umask allows.
    const mode_t mode = platform::newFileMode();
    options.mode = mode | ((mode & 0444) >> 2);
    const platform::SaveResult saved =
        platform::saveFile(target, compiledProgram(runtime.bytes, repeat, compactScript(script)), options);
    if (!saved) return "cannot write '" + target + "': " + saved.reason();
    return {};
}

}  // namespace tarvoke::playback
