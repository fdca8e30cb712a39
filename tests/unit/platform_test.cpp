// Platform parts below the players: the poll loop's handlers in their order
// and its waits until the next timer, where consecutive waits end, the
// virtual-key table, and the saving and reading of files.

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>

#include "platform/fake/fakekeyboard.h"
#include "platform/fileread.h"
#include "platform/filesave.h"
#include "platform/keytable.h"
#include "platform/loop/pollloop.h"
#include "platform/waitschedule.h"

namespace tarvoke::platform {
namespace {

using std::chrono::milliseconds;
using Handle = std::unique_ptr<platform::EventLoop::Handle>;

// Hooks run first, then readable descriptors, then due timers; a handler
// may end its own watch and another's.
TEST(PollLoop, HandlersRunInOrderAndMayEndWatches) {
    platform::PollLoop loop;
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe(ends), 0);
    std::vector<std::string> calls;
    Handle hook, readable, other, timer;
    hook = loop.beforeEachTurn([&] { calls.push_back("hook"); });
    readable = loop.watchReadable(ends[0], [&] {
        calls.push_back("readable");
        readable.reset();
        other.reset();
    });
    other = loop.watchReadable(ends[0], [&] { calls.push_back("other"); });
    timer = loop.every(milliseconds(1), [&] { calls.push_back("timer"); });
    EXPECT_EQ(::write(ends[1], "x", 1), 1);
    ::usleep(2000);
    loop.turn(false);
    loop.turn(false);
    EXPECT_EQ(calls, (std::vector<std::string>{"hook", "readable", "timer", "hook"}));
    ::close(ends[0]);
    ::close(ends[1]);
}

// A waiting turn sleeps until the next timer, and no longer.
TEST(PollLoop, AWaitingTurnWakesForTheNextTimer) {
    platform::PollLoop loop;
    int ticks = 0;
    const Handle timer = loop.every(milliseconds(20), [&] { ++ticks; });
    const auto start = std::chrono::steady_clock::now();
    while (ticks == 0) loop.turn(true);
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took, milliseconds(20));
    EXPECT_LT(took, milliseconds(1000));
}

constexpr int64_t kMs = 1'000'000;

TEST(WaitSchedule, ConsecutiveWaitsLieEndToEndUnlessInterrupted) {
    platform::WaitSchedule schedule;
    EXPECT_EQ(schedule.deadlineFor(100 * kMs, 10), 110 * kMs);  // the first counts from now
    schedule.reached(110 * kMs);
    // 0.4 ms went on a click between the pauses: the next counts from 110.
    EXPECT_EQ(schedule.deadlineFor(110 * kMs + 400'000, 10), 120 * kMs);
    schedule.reached(120 * kMs);
    // After slow work the pause waits in full.
    EXPECT_EQ(schedule.deadlineFor(130 * kMs, 10), 140 * kMs);
    schedule.reached(140 * kMs);
    schedule.interrupted();
    EXPECT_EQ(schedule.deadlineFor(141 * kMs, 5), 146 * kMs);
    schedule.reached(146 * kMs);
    EXPECT_EQ(schedule.deadlineFor(145 * kMs, 5), 150 * kMs);  // never counts from a deadline still ahead
}

// The virtual-key table over a fake keyboard: every number the recorder asks
// about reads back as itself when pressed, on the map's own keys.

using platform::fake::FakeKeyboard;

std::set<int> numbersDown(FakeKeyboard& keyboard) {
    std::set<int> down;
    for (int vk = 1; vk <= 254; ++vk)
        if (keyboard.isDown(static_cast<uint8_t>(vk))) down.insert(vk);
    return down;
}

// Pressed alone, a number reads as itself; a side of a modifier also as the
// generic one, and the generic one as its left side. A number with no
// meaning presses nothing.
TEST(KeyTable, EachNumberReadsBackAsItselfAlone) {
    const std::map<int, std::set<int>> alsoDown = {{16, {160}}, {160, {16}}, {161, {16}}, {17, {162}}, {162, {17}},
                                                   {163, {17}}, {18, {164}}, {164, {18}}, {165, {18}}};
    FakeKeyboard keyboard = FakeKeyboard::us();
    int meaningful = 0;
    for (int vk = 1; vk <= 254; ++vk) {
        keyboard.releaseAll();
        keyboard.pressVirtualKey(static_cast<uint8_t>(vk), true);
        std::set<int> expected;
        if (keyMeaning(static_cast<uint8_t>(vk)).kind != KeyKind::None) {
            ++meaningful;
            expected = {vk};
            if (alsoDown.count(vk)) expected.merge(std::set<int>(alsoDown.at(vk)));
        }
        EXPECT_EQ(numbersDown(keyboard), expected) << "virtual key " << vk;
        keyboard.pressVirtualKey(static_cast<uint8_t>(vk), false);
        EXPECT_TRUE(numbersDown(keyboard).empty()) << "virtual key " << vk;
    }
    // A row lost from the table would press nothing and pass the loop above:
    // the count of rows shows it.
    EXPECT_EQ(meaningful, 156);
}

// X's middle button is its 2, the right one its 3.
TEST(KeyTable, XButtonsReadAsTheirNumbers) {
    FakeKeyboard keyboard = FakeKeyboard::us();
    keyboard.setButtonDown(2, true);
    keyboard.setButtonDown(3, true);
    EXPECT_EQ(numbersDown(keyboard), (std::set<int>{2, 4}));
}

// On a French map: a digit presses the key carrying it at any level (49: the
// key that types "&"), the right Alt falls back to ISO_Level3_Shift, and OEM
// keys are places on the keyboard whatever they type.
TEST(KeyTable, KeysOfAnotherMap) {
    const std::pair<int, int> keys[] = {{49, 10},  {165, 108}, {186, 47}, {187, 21}, {188, 59}, {189, 20}, {190, 60},
                                        {191, 61}, {192, 49},  {219, 34}, {220, 51}, {221, 35}, {222, 48}, {226, 94}};
    FakeKeyboard keyboard = FakeKeyboard::azerty();
    keyboard.setKey(47, {'m', 'M'});
    for (auto [vk, keycode] : keys) {
        EXPECT_EQ(keyboard.keycodeFor(static_cast<uint8_t>(vk)), keycode) << vk;
        keyboard.releaseAll();
        keyboard.setKeycodeDown(static_cast<uint8_t>(keycode), true);
        EXPECT_TRUE(numbersDown(keyboard).count(vk)) << vk;
    }
    keyboard.releaseAll();
    keyboard.setKeycodeDown(10, true);
    EXPECT_EQ(numbersDown(keyboard), (std::set<int>{49}));
}

// Files saved whole or not at all, and read only when they are regular files.
namespace fs = std::filesystem;

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}
void writePlain(const fs::path& path, const std::string& text, mode_t mode) {
    std::ofstream(path, std::ios::binary) << text;
    ::chmod(path.c_str(), mode);
}
mode_t modeOf(const fs::path& path) {
    struct stat info {};
    ::stat(path.c_str(), &info);
    return info.st_mode & 07777;
}

// A folder of its own per test; whatever a test leaves in it shows.
class FileSave : public ::testing::Test {
protected:
    FileSave() {
        std::string pattern = (fs::temp_directory_path() / "tarvoke-filesave-XXXXXX").string();
        m_dir = ::mkdtemp(pattern.data());
    }
    ~FileSave() override { fs::remove_all(m_dir); }
    fs::path at(const std::string& name) const { return m_dir / name; }
    std::set<std::string> names() const {
        std::set<std::string> all;
        for (const auto& entry : fs::recursive_directory_iterator(m_dir))
            all.insert(entry.path().lexically_relative(m_dir).string());
        return all;
    }
    fs::path m_dir;
};

// Exact bytes, whatever they hold, with the bits each kind of SaveOptions
// asks for, and no temporary file left beside them: also under a name as
// long as names go (the temporary file must not take its name from the
// target's), and under a bare name, in the current folder.
TEST_F(FileSave, WritesExactlyTheBytesWithTheAskedBits) {
    const mode_t oldMask = ::umask(027);
    const struct {
        const char* what;
        std::string name, bytes;
        std::optional<mode_t> before;  // the file replaced, with its bits
        SaveOptions options;
        mode_t after;
    } cases[] = {
        {"empty", "out", "", {}, {}, 0640},
        {"text", "out", "Sleep 100\r\nMove 10, 20\n", {}, {}, 0640},
        {"zero bytes inside", "out", std::string("a\0b\0", 4), {}, {}, 0640},
        {"more than one write takes", "out", std::string(3 << 20, 'x') + "end", {}, {}, 0640},
        {"a name at the length limit", std::string(NAME_MAX, 'n'), "long", {}, {}, 0640},
        {"a bare name", "", "here", {}, {}, 0640},
        {"replaced private file stays private", "out", "new", 0600, {}, 0600},
        {"replaced executable stays executable", "out", "new", 0755, {}, 0755},
        {"asked bits over an old file", "out", "new", 0600, {.mode = 0644}, 0644},
        {"asked bits ignore the umask", "out", "new", {}, {.mode = 0666}, 0666},
        {"never-replace makes a new file", "out", "new", {}, {.existing = Existing::Keep, .mode = 0644}, 0644},
    };
    const fs::path home = fs::current_path();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string name = c.name.empty() ? "bare" : c.name;
        fs::remove_all(m_dir);
        fs::create_directory(m_dir);
        if (c.before) writePlain(at(name), "old", *c.before);
        fs::current_path(m_dir);
        const SaveResult saved = saveFile(c.name.empty() ? "bare" : at(c.name).string(), c.bytes, c.options);
        fs::current_path(home);
        ASSERT_TRUE(saved) << saved.reason();
        EXPECT_EQ(readFile(at(name)), c.bytes);
        EXPECT_EQ(modeOf(at(name)), c.after);
        EXPECT_EQ(names(), std::set<std::string>{name});
    }
    EXPECT_EQ(newFileMode(), 0640u);
    EXPECT_EQ(::umask(oldMask), 027u) << "reading the umask must not change it";
}

// The immutable flag stops root too, for whom permission bits do not.
bool lockFolder(const std::string& folder, bool lock) {
    if (::geteuid() == 0) return std::system(("chattr " + std::string(lock ? "+i '" : "-i '") + folder + "' 2>/dev/null").c_str()) == 0;
    return ::chmod(folder.c_str(), lock ? 0500 : 0700) == 0;
}

// Files may grow to a few bytes only: the write fails after the temporary
// file exists and part of the bytes are in it.
bool limitFileSize(const std::string&, bool limit) {
    static rlimit before{};
    static sighandler_t signalBefore = SIG_DFL;
    if (!limit) {
        ::signal(SIGXFSZ, signalBefore);
        return ::setrlimit(RLIMIT_FSIZE, &before) == 0;
    }
    ::getrlimit(RLIMIT_FSIZE, &before);
    signalBefore = ::signal(SIGXFSZ, SIG_IGN);
    rlimit small = before;
    small.rlim_cur = 4;
    return ::setrlimit(RLIMIT_FSIZE, &small) == 0;
}

bool imposeNothing(const std::string&, bool) { return true; }

// Saves in a child that is killed while it writes, by going over the file
// size limit, whose signal ends the process at that very write. True when
// that signal ended it.
bool killedWhileSaving(const std::string& path) {
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit noCore{0, 0}, small{1 << 20, 1 << 20};
        ::setrlimit(RLIMIT_CORE, &noCore);
        ::signal(SIGXFSZ, SIG_DFL);
        ::setrlimit(RLIMIT_FSIZE, &small);
        saveFile(path, std::string(4 << 20, 'x'));
        ::_exit(0);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ;
}

// A save that cannot be made, refused at once, failing on the way or killed,
// leaves what was at the target, its text and bits, and nothing else.
TEST_F(FileSave, FailedSaveLeavesTheTargetAsItWas) {
    struct Case {
        const char* what;
        const char* target;
        Existing existing;
        bool (*impose)(const std::string& folder, bool on);
        SaveOutcome outcome;
        std::set<int> errors;
    };
    const Case cases[] = {
        {"never-replace keeps a file", "old", Existing::Keep, imposeNothing, SaveOutcome::TargetExists, {EEXIST}},
        {"never-replace keeps a folder", "folder", Existing::Keep, imposeNothing, SaveOutcome::TargetExists, {EEXIST}},
        {"a folder is not replaced by a file", "folder", Existing::Replace, imposeNothing, SaveOutcome::Failed, {EISDIR}},
        {"a missing folder", "nowhere/out", Existing::Replace, imposeNothing, SaveOutcome::Failed, {ENOENT}},
        {"a missing folder, never-replace", "nowhere/out", Existing::Keep, imposeNothing, SaveOutcome::Failed, {ENOENT}},
        {"the folder refuses new files", "old", Existing::Replace, lockFolder, SaveOutcome::Failed, {EPERM, EACCES}},
        {"the bytes do not fit", "old", Existing::Replace, limitFileSize, SaveOutcome::Failed, {EFBIG}},
    };
    writePlain(at("old"), "old text", 0600);
    fs::create_directory(at("folder"));
    const std::set<std::string> before = names();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        if (!c.impose(m_dir.string(), true)) {
            std::printf("skipped: cannot impose that %s here\n", c.what);
            continue;
        }
        const SaveResult saved = saveFile(at(c.target).string(), "much more than four bytes", {.existing = c.existing, .mode = {}});
        c.impose(m_dir.string(), false);
        EXPECT_FALSE(saved);
        EXPECT_EQ(saved.outcome, c.outcome);
        EXPECT_TRUE(c.errors.count(saved.error)) << saved.reason();
        EXPECT_FALSE(saved.reason().empty());
        EXPECT_EQ(readFile(at("old")), "old text");
        EXPECT_EQ(modeOf(at("old")), 0600u);
        EXPECT_TRUE(fs::is_empty(at("folder")));
        EXPECT_EQ(names(), before);
    }
    // Killed over the old file or making a new one: the file written has no name.
    for (const char* target : {"old", "fresh"}) {
        SCOPED_TRACE(target);
        ASSERT_TRUE(killedWhileSaving(at(target).string()));
        EXPECT_EQ(readFile(at("old")), "old text");
        EXPECT_EQ(modeOf(at("old")), 0600u);
        EXPECT_EQ(names(), before);
    }
}

// A save through a symbolic link writes the file the link leads to, and the
// link stays a link; with Keep, the link is what is there.
TEST_F(FileSave, SymbolicLinksLeadToTheirFile) {
    struct Case {
        const char* what;
        std::vector<std::pair<const char*, const char*>> links;  // name, where it leads
        Existing existing;
        const char* written;  // the file that holds "new" after the save, if any
        mode_t mode;          // and its bits
        int error;
    };
    const mode_t fresh = newFileMode();
    const Case cases[] = {
        {"absolute link", {{"link", "ABS/real"}}, Existing::Replace, "real", 0600, 0},
        {"relative link into a folder", {{"link", "sub/real"}}, Existing::Replace, "sub/real", 0640, 0},
        {"chain of links", {{"link", "hop"}, {"hop", "sub/../real"}}, Existing::Replace, "real", 0600, 0},
        {"link to no file yet", {{"link", "sub/fresh"}}, Existing::Replace, "sub/fresh", fresh, 0},
        {"loop", {{"link", "hop"}, {"hop", "link"}}, Existing::Replace, nullptr, 0, ELOOP},
        {"never-replace keeps the link", {{"link", "real"}}, Existing::Keep, nullptr, 0, EEXIST},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        fs::remove_all(m_dir);
        fs::create_directories(at("sub"));
        writePlain(at("real"), "old", 0600);
        writePlain(at("sub/real"), "old", 0640);
        for (const auto& [name, target] : c.links) {
            const std::string to = target;
            fs::create_symlink(to.starts_with("ABS/") ? at(to.substr(4)) : fs::path(to), at(name));
        }
        std::set<std::string> after = names();
        if (c.written) after.insert(c.written);  // a name only where the link led to no file
        const SaveResult saved = saveFile(at("link").string(), "new", {.existing = c.existing, .mode = {}});
        EXPECT_EQ(saved.error, c.error) << saved.reason();
        EXPECT_TRUE(fs::is_symlink(at("link")));
        EXPECT_EQ(names(), after);
        EXPECT_EQ(c.written ? modeOf(at(c.written)) : 0u, c.mode);
        for (const std::string file : {"real", "sub/real", "sub/fresh"}) {
            const char* before = file == "sub/fresh" ? "" : "old";  // "" for no file
            EXPECT_EQ(readFile(at(file)), c.written && file == c.written ? "new" : before) << file;
        }
    }
}

// Only a regular file is read; nothing else makes the reader wait or read
// for ever, and every failure is an outcome, never an exception.
TEST_F(FileSave, ReadsRegularFilesOnly) {
    writePlain(at("script.tk"), "Function(Main);", 0644);
    writePlain(at("empty.tk"), "", 0644);
    ASSERT_EQ(::mkfifo(at("fifo").c_str(), 0600), 0);
    writePlain(at("large.tk"), std::string(1025, 'x'), 0644);
    const struct {
        std::string path;
        ReadOutcome outcome;
        std::string bytes;
    } cases[] = {
        {at("script.tk"), ReadOutcome::Read, "Function(Main);"}, {at("empty.tk"), ReadOutcome::Read, ""},
        {at("missing.tk"), ReadOutcome::Failed, ""},             {m_dir, ReadOutcome::Folder, ""},
        {at("fifo"), ReadOutcome::NotRegular, ""},                {"/dev/zero", ReadOutcome::NotRegular, ""},
        {"/proc/self/mem", ReadOutcome::Failed, ""},              {at("large.tk"), ReadOutcome::TooLarge, ""},
    };
    for (const auto& c : cases) {
        const ReadResult read = readRegularFile(c.path, ReadLimits{1024, {}});
        EXPECT_EQ(read.outcome, c.outcome) << c.path;
        EXPECT_EQ(read.bytes, c.bytes) << c.path;
        EXPECT_EQ(static_cast<bool>(read), c.outcome == ReadOutcome::Read) << c.path;
        EXPECT_EQ(read.reason().empty(), c.outcome == ReadOutcome::Read) << c.path;
    }
    // A file from /proc says it is empty and is not: it is read to its end.
    EXPECT_NE(readRegularFile("/proc/self/status").bytes.find("VmRSS"), std::string::npos);
    // A read that a stop ends.
    EXPECT_EQ(readRegularFile(at("script.tk"), ReadLimits{1024, [] { return true; }}).outcome, ReadOutcome::Stopped);
}

}  // namespace
}  // namespace tarvoke::platform
