#include "support/Program.h"

#include "support/Shell.h"

#include <cstdlib>
#include <stdexcept>

namespace support {

Run runProgram(const Workspace& workspace, const std::string& program, const std::string& arguments,
               const std::string& zone) {
    return shell(workspace, "TZ='" + zone + "' '" + program + "' " + arguments);
}

std::filesystem::path newDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "zephan-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no directory for the test");
    }
    return name;
}

}  // namespace support
