#include "sim/trace/StdoutCapture.h"

#include "sim/windows/WindowsTime.h"

#include <array>
#include <cstdio>
#include <io.h>

#include <fcntl.h>

namespace sim {

namespace {

HANDLE handleOf(int descriptor) {
    return reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
}

/// A file without a use for anybody else, which goes with its last handle.
int openCollection() {
    std::array<char, MAX_PATH + 1> folder{};
    std::array<char, MAX_PATH + 1> path{};
    ::GetTempPathA(static_cast<DWORD>(folder.size()), folder.data());
    ::GetTempFileNameA(folder.data(), "sim", 0, path.data());
    const HANDLE file =
        ::CreateFileA(path.data(), GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                      nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    return file == INVALID_HANDLE_VALUE
               ? -1
               : ::_open_osfhandle(reinterpret_cast<std::intptr_t>(file), _O_BINARY | _O_NOINHERIT);
}

}  // namespace

StdoutCapture::StdoutCapture() {
    std::fflush(stdout);
    original_ = checked(::_dup(::_fileno(stdout)), "cannot keep it");
    collected_ = checked(openCollection(), "cannot collect it");
    checked(::_dup2(collected_, ::_fileno(stdout)), "cannot redirect it");
    ::_setmode(::_fileno(stdout), _O_BINARY);
}

StdoutCapture::~StdoutCapture() {
    std::fflush(stdout);
    ::_dup2(original_, ::_fileno(stdout));
    ::_close(original_);
    ::_close(collected_);
}

std::string StdoutCapture::take() {
    std::fflush(stdout);
    const HANDLE file = handleOf(collected_);
    LARGE_INTEGER size{};
    if (::GetFileSizeEx(file, &size) == FALSE || size.QuadPart == 0) {
        return {};
    }
    std::string text(static_cast<std::size_t>(size.QuadPart), '\0');
    // All who share the file share the position in it.
    ::SetFilePointerEx(file, {}, nullptr, FILE_BEGIN);
    DWORD read = 0;
    ::ReadFile(file, text.data(), static_cast<DWORD>(text.size()), &read, nullptr);
    text.resize(read);
    ::SetFilePointerEx(file, {}, nullptr, FILE_BEGIN);
    ::SetEndOfFile(file);
    return text;
}

}  // namespace sim
