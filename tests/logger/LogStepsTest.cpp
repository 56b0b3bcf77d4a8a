// Random steps around the log file: what other programs do to it, to its directory and to the process, with
// entries in between. An oracle that knows files by their numbers, wherever they were moved and even when
// they were deleted, says where each entry has to stand: once and whole.
//
//     LOG_STEP_SEEDS=61-10000 build/release/bin/log-file-tests --gtest_filter='LogSteps*'
//
// goes through more of them.
#include "logger/LoggingHost.h"
#include "logger/User.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

using logs::LoggingHost;

constexpr int kDay = 86400;
constexpr mode_t kAll = 0700;
constexpr mode_t kAllOfAFile = 0600;

struct stat statusOf(const fs::path& path, bool follow = true) {
    struct stat status {};
    if ((follow ? ::stat(path.c_str(), &status) : ::lstat(path.c_str(), &status)) != 0) {
        status = {};
    }
    return status;
}

class Steps final {
  public:
    Steps(const LoggingHost& host, unsigned int seed) : host_(host), random_(seed) {
        fs::create_directories(folder_);
        restart();
    }
    Steps(const Steps&) = delete;
    Steps& operator=(const Steps&) = delete;
    ~Steps() {
        repair();
        LoggingHost::stop();
        for (const auto& [number, descriptor] : files_) {
            ::close(descriptor);
        }
        fs::remove_all(root_);
    }

    void step() {
        static constexpr std::array<void (Steps::*)(), 15> kSteps{
            &Steps::remove,      &Steps::moveAside,   &Steps::replace,   &Steps::empty,
            &Steps::appendToIt,  &Steps::otherThing,  &Steps::link,      &Steps::replaceFolder,
            &Steps::permissions, &Steps::permissions, &Steps::ofTheFile, &Steps::descriptors,
            &Steps::takeTheName, &Steps::repair,      &Steps::restart};
        interposed::now += below(3) == 0 ? 1 : below(20) == 0 ? -3600 : 0;
        see();
        below(3) == 0 ? (this->*kSteps.at(below(kSteps.size())))() : void();
        log();
    }

    /// All that was written stands where it was put, once and whole.
    void check() {
        std::map<std::string, int> found;
        for (const auto& [number, descriptor] : files_) {
            const std::string text = textOf(number);
            for (std::size_t at = text.find('['); at != std::string::npos; at = text.find('[', at + 1)) {
                ++found[text.substr(at, text.find_first_of("[]", at + 1) - at)];
            }
        }
        for (const auto& [text, number] : entries_) {
            EXPECT_EQ(found[text.substr(0, text.size() - 1)], 1) << text << " in " << number;
        }
        EXPECT_EQ(found.size(), entries_.size()) << "torn or foreign texts";
    }

  private:
    std::size_t below(std::size_t bound) { return random_() % bound; }

    void log() {
        const std::string text = "[" + std::to_string(count_++) + " " + std::string(below(120), 'x') + "]";
        const struct stat before = statusThrough();
        const bool missing = before.st_ino == 0;
        const bool takesEntries = descriptorsFree_ && (folderMode_ & S_IXUSR) != 0 &&
                                  (missing ? (folderMode_ & S_IWUSR) != 0
                                           : S_ISREG(before.st_mode) && (before.st_mode & S_IWUSR) != 0);
        const bool isFull = ((before.st_mode & S_IRUSR) != 0 ? before.st_size : 0) >= limit_;
        LoggingHost::log(text.c_str());
        see();
        const ino_t now = statusThrough().st_ino;
        ino_t landed = 0;
        for (const auto& [number, descriptor] : files_) {
            landed = textOf(number).find(text) != std::string::npos ? number : landed;
        }
        entries_[text] = landed;
        ASSERT_NE(landed, 0U) << text << " is lost";
        EXPECT_TRUE(landed == now || (!takesEntries && landed == last_)) << text << " stands elsewhere";
        if (takesEntries && !missing && (folderMode_ & S_IWUSR) != 0) {
            EXPECT_EQ(now != before.st_ino, isFull) << "of " << before.st_size << " bytes";
            struct stat old {};
            EXPECT_TRUE(::fstat(files_.at(before.st_ino), &old) == 0 && old.st_nlink > 0) << "a file is gone";
        }
        last_ = landed;
    }

    /// Runs the body as if nothing stood in its way.
    template <typename Body>
    auto freely(Body&& body) {
        const mode_t folder = folderMode_;
        const mode_t root = rootMode_;
        const bool descriptors = descriptorsFree_;
        usable();
        const auto result = body();
        setFolder(folder), setRoot(root), setDescriptors(descriptors);
        return result;
    }
    struct stat statusThrough() {
        return freely([this] { return statusOf(file_); });
    }
    /// Takes hold of the files that came since.
    void see() {
        freely([this] {
            for (const auto& entry : fs::recursive_directory_iterator(root_)) {
                const struct stat status = statusOf(entry.path(), false);
                if (S_ISREG(status.st_mode) && files_.count(status.st_ino) == 0) {
                    ::chmod(entry.path().c_str(), kAllOfAFile);
                    files_[status.st_ino] = ::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
                    ::chmod(entry.path().c_str(), status.st_mode & 0777);
                }
            }
            return 0;
        });
    }
    std::string textOf(ino_t number) const {
        struct stat status {};
        ::fstat(files_.at(number), &status);
        std::string text(static_cast<std::size_t>(status.st_size), '\0');
        EXPECT_EQ(::pread(files_.at(number), text.data(), text.size(), 0), status.st_size);
        return text;
    }

    void setFolder(mode_t mode) { folderMode_ = mode, ::chmod(folder_.c_str(), mode); }
    void setRoot(mode_t mode) { rootMode_ = mode, ::chmod(root_.c_str(), mode); }
    void setDescriptors(bool free) { descriptorsFree_ = free, logs::setMostDescriptors(free ? 1024 : 3); }
    void usable() { setDescriptors(true), setRoot(kAll), setFolder(kAll); }
    std::string anotherName() { return "k.moved" + std::to_string(count_++) + ".xml"; }

    // What may happen.
    void remove() {
        freely([this] { return fs::remove(file_); });
    }
    void moveAside() {
        freely([this] { return ::rename(file_.c_str(), (folder_ / anotherName()).c_str()); });
    }
    void replace() {
        freely([this] {
            const fs::path other = folder_ / anotherName();
            std::ofstream(other) << std::string(static_cast<std::size_t>(statusOf(file_).st_size), '-');
            return ::rename(other.c_str(), file_.c_str());
        });
    }
    void empty() {
        freely([this] {
            const bool done = ::truncate(file_.c_str(), 0) == 0;
            std::erase_if(entries_,
                          [&](const auto& entry) { return done && entry.second == statusOf(file_).st_ino; });
            return done;
        });
    }
    void appendToIt() {
        freely([this] {
            if (S_ISREG(statusOf(file_).st_mode)) {
                std::ofstream(file_, std::ios::app) << "(of another)";
            }
            return 0;
        });
    }
    void otherThing() {
        moveAside();
        freely(
            [this] { return below(2) == 0 ? ::mkdir(file_.c_str(), kAll) : ::mkfifo(file_.c_str(), kAll); });
    }
    void link() {
        moveAside();
        freely([this] { return ::symlink(anotherName().c_str(), file_.c_str()); });
    }
    void replaceFolder() {
        if (descriptorsFree_ && (rootMode_ & S_IXUSR) != 0) {
            freely([this] {
                fs::rename(folder_, root_ / anotherName());
                return fs::create_directory(folder_);
            });
            ++interposed::now;  // it is noticed in the next second
        }
    }
    void permissions() {
        static constexpr std::array<mode_t, 5> kModes{kAll, 0500, 0600, 0400, 0};
        below(2) == 0 ? setFolder(kModes.at(below(kModes.size()))) : setRoot(kModes.at(below(kModes.size())));
    }
    void ofTheFile() {
        static constexpr std::array<mode_t, 4> kModes{kAllOfAFile, 0200, 0400, 0};
        freely([this] {
            return S_ISREG(statusOf(file_).st_mode) &&
                   ::chmod(file_.c_str(), kModes.at(below(kModes.size()))) == 0;
        });
    }
    void descriptors() { setDescriptors(!descriptorsFree_); }
    void takeTheName() {
        const std::tm at = [&] {
            const std::time_t now = interposed::now;
            return *std::localtime(&now);
        }();
        std::array<char, 64> name{};
        std::snprintf(name.data(), name.size(), "k%d_%d_%d_%d_%d_%d.xml", at.tm_year + 1900, at.tm_mon + 1,
                      at.tm_mday, at.tm_hour, at.tm_min, at.tm_sec);
        freely([&] { return std::ofstream(folder_ / name.data(), std::ios::app).good(); });
    }
    void repair() {
        usable();
        if (const struct stat status = statusOf(file_); status.st_ino != 0 && !S_ISREG(status.st_mode)) {
            fs::remove(file_);
        }
        ::chmod(file_.c_str(), kAllOfAFile);
    }
    /// With files that are old, young, not to be read, or of a time when the clock was not set.
    void restart() {
        repair();
        LoggingHost::stop();
        std::map<fs::path, struct stat> expected;
        for (const auto& entry : fs::directory_iterator(folder_)) {
            const std::size_t kind = below(6);
            const std::int64_t moment = kind == 0 ? kDay : interposed::now - (kind < 3 ? 40 : 10) * kDay;
            const std::array<timespec, 2> times{timespec{moment, 0}, timespec{moment, 0}};
            ::utimensat(AT_FDCWD, entry.path().c_str(), times.data(), AT_SYMLINK_NOFOLLOW);
            const struct stat status = statusOf(entry.path(), false);
            const bool isOld = kind == 1 || kind == 2;
            const bool isReadable = S_ISREG(status.st_mode) && (status.st_mode & S_IRUSR) != 0;
            if (!S_ISLNK(status.st_mode) && !(isOld && isReadable)) {  // a link's age depends on two
                expected[entry.path()] = status;
            }
        }
        static constexpr std::array<const char*, 4> kLimits{"0", "200", "1000", "5000000"};
        const char* const limit = kLimits.at(below(kLimits.size()));
        limit_ = std::atol(limit);
        host_.start(logs::setting("FileSize", limit), file_.string());
        for (const auto& [path, status] : expected) {
            const struct stat after = statusOf(path, false);
            EXPECT_EQ(after.st_ino, status.st_ino) << path << " was deleted";
            EXPECT_FALSE(S_ISREG(after.st_mode) && after.st_mtime == kDay) << path << " has no date";
        }
        see();
        last_ = statusOf(file_).st_ino;
    }

    const LoggingHost& host_;
    std::mt19937 random_;
    const fs::path root_ = host_.workspace.path("steps");
    const fs::path folder_ = root_ / "log";
    const fs::path file_ = folder_ / "k.xml";
    mode_t rootMode_ = kAll;
    mode_t folderMode_ = kAll;
    bool descriptorsFree_ = true;
    std::int64_t limit_ = 0;
    int count_ = 0;
    ino_t last_ = 0;              ///< what the last entry went into
    std::map<ino_t, int> files_;  ///< held open: so no number comes twice
    std::map<std::string, ino_t> entries_;
};

/// Standard output is the module's there.
class ToStandardError final : public testing::EmptyTestEventListener {
    void OnTestPartResult(const testing::TestPartResult& result) override {
        std::fprintf(stderr, "%s:%d: %s\n", result.file_name(), result.line_number(), result.message());
    }
};

TEST(LogSteps, EachEntryStandsWhereItBelongs) {
    unsigned int first = 1;
    unsigned int last = 60;
    if (const char* const asked = std::getenv("LOG_STEP_SEEDS")) {
        ASSERT_EQ(std::sscanf(asked, "%u-%u", &first, &last), 2) << "not FIRST-LAST: " << asked;
    }
    constexpr int kSteps = 60;
    const LoggingHost host;
    logs::asAUser(host, [&] {
        ::alarm(0);
        ASSERT_NE(std::freopen("/dev/null", "w", stdout), nullptr);
        testing::UnitTest::GetInstance()->listeners().Append(new ToStandardError);
        for (unsigned int seed = first; seed <= last && !testing::Test::HasFailure(); ++seed) {
            SCOPED_TRACE("seed " + std::to_string(seed));
            interposed::now = ::time(nullptr) + static_cast<std::int64_t>(seed);
            Steps steps(host, seed);
            for (int i = 0; i < kSteps && !testing::Test::HasFatalFailure(); ++i) {
                steps.step();
            }
            steps.check();
        }
    });
}

}  // namespace
