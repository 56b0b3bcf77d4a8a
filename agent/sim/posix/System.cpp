#include "sim/System.h"

#include "sim/posix/Timespec.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sim::system {

std::string moduleBesideProgram() {
    std::string name = "libZephanRSMLogger.so.1";
    const auto tree = std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();
    for (const char* directory : {SIM_LIBRARY_DIRECTORY, "lib"}) {
        if (const auto path = tree / directory / name; std::filesystem::exists(path)) {
            return path.lexically_normal().string();
        }
    }
    return name;
}

bool childRuns() {
    siginfo_t ended = {};
    return ::waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid == 0;
}

// Where times had 32 bits once, the C++ library's own functions may end in 2038.
std::chrono::microseconds realTime() {
    timespec present = {};
    ::clock_gettime(CLOCK_REALTIME, &present);
    return std::chrono::seconds(present.tv_sec) +
           std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::nanoseconds(present.tv_nsec));
}

bool isOther(const std::filesystem::path& path) {
    struct stat state = {};
    return ::stat(path.c_str(), &state) == 0 && !S_ISREG(state.st_mode);
}

void setModified(const std::filesystem::path& path, std::chrono::microseconds moment) {
    const timespec times[2] = {{0, UTIME_OMIT}, timespecOf(moment)};
    if (::utimensat(AT_FDCWD, path.c_str(), times, 0) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
}

int openOutput(const std::optional<std::string>& path) {
    const int descriptor = path ? ::open(path->c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)
                                : ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    return descriptor;
}

int writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

void closeOutput(int descriptor) {
    ::close(descriptor);
}

std::optional<std::size_t> widthOf(int descriptor) {
    winsize size = {};
    return ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0
               ? std::optional<std::size_t>(size.ws_col)
               : std::nullopt;
}

}  // namespace sim::system
