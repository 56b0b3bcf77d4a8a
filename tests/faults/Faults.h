// The library that makes calls of the module fail: put before a program with LD_PRELOAD, it counts the
// module's calls of each kind and fails the ones that it is told to. Variables of the environment tell it:
//
//     KRX_FAULTS=KIND:FIRST:COUNT:ERROR[,...]  COUNT calls of that kind fail from the FIRST on with that error
//                                              number; with "short" half of what was asked for is done
//     KRX_FAULTS_REPORT=FILE                   gets "made NUMBER" and "KIND NUMBER" lines at the exit
//     KRX_FAULTS_JOURNAL=FILE                  gets what the module wrote into its files
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#define INTERPOSED __attribute__((visibility("default"), noinline))

namespace faults {

/// What can fail. Memory is told apart by who asks for it on the module's behalf.
constexpr std::array kKinds = {
    "memory",    "parser-memory",  "agent-memory", "open",       "openat",        "fcntl",
    "close",     "lseek",          "fstat",        "pread",      "pwrite",        "write",
    "ftruncate", "fsync",          "renameat2",    "renameat",   "linkat",        "unlinkat",
    "unlink",    "fstatat",        "statx",        "faccessat",  "fdopendir",     "readdir",
    "closedir",  "mutexattr-init", "mutex-init",   "mutex-lock", "mutex-trylock", "mutex-unlock",
    "system",    "fwrite"};

/// A kind's number.
consteval std::size_t numberOf(std::string_view name) {
    std::size_t number = 0;
    while (name != kKinds.at(number)) {
        ++number;
    }
    return number;
}

constexpr int kNone = 0;
constexpr int kShort = -1;

/// The error that a call of this kind has to end with, or `kNone`, which it is also when the call is not
/// the module's own.
int faultOf(std::size_t kind) noexcept;
/// The same for memory, whose kind depends on the way that leads to the module.
bool memoryFails() noexcept;
/// True when the last call that was looked at came from the module.
bool isModules() noexcept;
/// Notes what the module did: 'W' wrote at a file's end, 'P' at its start ('p': not all of it), 'T' cut one,
/// 'U' removed one, 'E' echoed a text.
void note(char what, std::string_view text) noexcept;

/// The function of that name behind this library, whose result is a pointer to `Function`.
void* nextNamed(const char* name) noexcept;

template <typename Function>
Function* next(Function*& known, const char* name) noexcept {
    if (known == nullptr) {
        known = reinterpret_cast<Function*>(nextNamed(name));
    }
    return known;
}

}  // namespace faults
