#include "sim/windows/ModuleCalls.h"

#include "sim/time/ProcessTime.h"

#include <cstddef>
#include <mutex>
#include <set>
#include <string_view>
#include <time.h>
#include <utility>

namespace sim {

namespace {

std::mutex mutex;
std::set<HANDLE> opened;

/// A file that the module made or wrote was modified at the simulation's present.
void stamp(HANDLE file) {
    const DWORD saved = ::GetLastError();
    const FILETIME time = fileTimeOf(shownTime());
    ::SetFileTime(file, nullptr, nullptr, &time);
    ::SetLastError(saved);
}

__time64_t __cdecl shownSeconds(__time64_t* result) {
    const __time64_t now = std::chrono::floor<std::chrono::seconds>(shownTime()).count();
    if (result != nullptr) {
        *result = now;
    }
    return now;
}

HANDLE WINAPI createFile(LPCSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                         DWORD disposition, DWORD flags, HANDLE pattern) {
    const HANDLE file = ::CreateFileA(path, access, sharing, security, disposition, flags, pattern);
    const DWORD outcome = ::GetLastError();
    if (file != INVALID_HANDLE_VALUE) {
        if (disposition == OPEN_ALWAYS && outcome != ERROR_ALREADY_EXISTS) {
            stamp(file);
        }
        const std::lock_guard lock(mutex);
        opened.insert(file);
    }
    ::SetLastError(outcome);
    return file;
}

BOOL WINAPI closeHandle(HANDLE handle) {
    {
        const std::lock_guard lock(mutex);
        opened.erase(handle);
    }
    return ::CloseHandle(handle);
}

BOOL WINAPI writeFile(HANDLE file, LPCVOID data, DWORD size, LPDWORD written, LPOVERLAPPED position) {
    const BOOL done = ::WriteFile(file, data, size, written, position);
    if (done != FALSE) {
        stamp(file);
    }
    return done;
}

BOOL WINAPI setEndOfFile(HANDLE file) {
    const BOOL done = ::SetEndOfFile(file);
    if (done != FALSE) {
        stamp(file);
    }
    return done;
}

const std::pair<std::string_view, void*> kTaken[] = {{"_time64", reinterpret_cast<void*>(shownSeconds)},
                                                     {"CreateFileA", reinterpret_cast<void*>(createFile)},
                                                     {"CloseHandle", reinterpret_cast<void*>(closeHandle)},
                                                     {"WriteFile", reinterpret_cast<void*>(writeFile)},
                                                     {"SetEndOfFile", reinterpret_cast<void*>(setEndOfFile)}};

void put(void*& entry, void* function) {
    DWORD before = 0;
    ::VirtualProtect(&entry, sizeof entry, PAGE_READWRITE, &before);
    entry = function;
    ::VirtualProtect(&entry, sizeof entry, before, &before);
}

}  // namespace

void redirect(HMODULE library, std::string_view function, void* target) {
    auto* const image = reinterpret_cast<std::byte*>(library);
    const auto at = [image](DWORD offset) { return image + offset; };
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(
        at(static_cast<DWORD>(reinterpret_cast<const IMAGE_DOS_HEADER*>(image)->e_lfanew)));
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* from = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(at(imports)); from->Name != 0;
         ++from) {
        const auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(at(from->OriginalFirstThunk));
        auto* entry = reinterpret_cast<void**>(at(from->FirstThunk));
        for (; name->u1.AddressOfData != 0; ++name, ++entry) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
                continue;
            }
            const std::string_view called = reinterpret_cast<const char*>(
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(at(static_cast<DWORD>(name->u1.AddressOfData)))
                    ->Name);
            if (called == function) {
                put(*entry, target);
            }
        }
    }
}

void takeCallsOf(HMODULE library) {
    for (const auto& [function, ours] : kTaken) {
        redirect(library, function, ours);
    }
}

void closeHandlesOfModule() {
    const std::lock_guard lock(mutex);
    for (const HANDLE handle : std::exchange(opened, {})) {
        ::CloseHandle(handle);
    }
}

}  // namespace sim
