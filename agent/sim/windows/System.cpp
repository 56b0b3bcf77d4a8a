#include "sim/System.h"

#include "sim/windows/WindowsTime.h"

#include <algorithm>
#include <cerrno>
#include <io.h>
#include <limits>
#include <system_error>
#include <tlhelp32.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace sim::system {

namespace {

[[noreturn]] void fail() {
    throw std::system_error(static_cast<int>(::GetLastError()), std::system_category());
}

}  // namespace

std::string moduleBesideProgram() {
    std::wstring program(std::numeric_limits<short>::max(), L'\0');
    program.resize(::GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
    return (std::filesystem::path(program).parent_path() / "ZephanRSMLogger.dll").string();
}

bool childRuns() {
    const HANDLE processes = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32 process{};
    process.dwSize = sizeof process;
    bool found = false;
    for (BOOL more = ::Process32First(processes, &process); more != FALSE && !found;
         more = ::Process32Next(processes, &process)) {
        found = process.th32ParentProcessID == ::GetCurrentProcessId();
    }
    ::CloseHandle(processes);
    return found;
}

std::chrono::microseconds realTime() {
    return std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::system_clock::now().time_since_epoch());
}

bool isOther(const std::filesystem::path& path) {
    std::error_code none;
    const auto kind = std::filesystem::status(path, none);
    return std::filesystem::exists(kind) && !std::filesystem::is_regular_file(kind);
}

void setModified(const std::filesystem::path& path, std::chrono::microseconds moment) {
    const HANDLE file = ::CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        fail();
    }
    const FILETIME time = fileTimeOf(moment);
    ::SetFileTime(file, nullptr, nullptr, &time);
    ::CloseHandle(file);
}

int openOutput(const std::optional<std::string>& path) {
    const int descriptor =
        path ? ::_open(path->c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC | _O_BINARY | _O_NOINHERIT,
                       _S_IREAD | _S_IWRITE)
             : ::_dup(::_fileno(stdout));
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    ::_setmode(descriptor, _O_BINARY);
    return descriptor;
}

int writeAll(int descriptor, std::string_view bytes) {
    constexpr std::size_t mostAtOnce = std::size_t{1} << 20U;
    while (!bytes.empty()) {
        const int written =
            ::_write(descriptor, bytes.data(), static_cast<unsigned int>(std::min(bytes.size(), mostAtOnce)));
        if (written < 0) {
            return errno;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

void closeOutput(int descriptor) {
    ::_close(descriptor);
}

std::optional<std::size_t> widthOf(int descriptor) {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
    if (::GetConsoleScreenBufferInfo(handle, &screen) == FALSE) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(screen.srWindow.Right - screen.srWindow.Left + 1);
}

}  // namespace sim::system
