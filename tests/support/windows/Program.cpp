#include "support/Program.h"

#include "support/Workspace.h"

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <windows.h>

namespace support {

Run runProgram(const Workspace& workspace, const std::string& program, const std::string& arguments,
               const std::string& zone) {
    Run run;
    ::_putenv_s("TZ", zone.c_str());
    HANDLE output = nullptr;
    HANDLE input = nullptr;
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    if (::CreatePipe(&output, &input, &inherited, 0) == FALSE) {
        throw std::runtime_error("no pipe for the program");
    }
    ::SetHandleInformation(output, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = start.hStdError = input;
    PROCESS_INFORMATION process{};
    std::string command = '"' + program + "\" " + arguments;
    const bool isStarted =
        ::CreateProcessA(program.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                         workspace.path("").string().c_str(), &start, &process) != FALSE;
    if (!isStarted) {
        run.printed = "not started: " + std::to_string(::GetLastError());
    }
    ::CloseHandle(input);
    std::array<char, 4096> buffer{};
    DWORD length = 0;
    while (::ReadFile(output, buffer.data(), static_cast<DWORD>(buffer.size()), &length, nullptr) != FALSE) {
        run.printed.append(buffer.data(), length);
    }
    ::CloseHandle(output);
    if (!isStarted) {
        return run;
    }
    DWORD status = 0;
    ::WaitForSingleObject(process.hProcess, INFINITE);
    ::GetExitCodeProcess(process.hProcess, &status);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    run.status = static_cast<int>(status);
    return run;
}

std::filesystem::path newDirectory() {
    static int count = 0;
    const std::string name =
        "zephan-test-" + std::to_string(::GetCurrentProcessId()) + "-" + std::to_string(++count);
    const std::filesystem::path directory = std::filesystem::temp_directory_path() / name;
    std::filesystem::remove_all(directory);
    std::filesystem::create_directories(directory);
    return directory;
}

}  // namespace support
