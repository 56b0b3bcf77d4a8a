#include "common/Program.h"

#include "common/ShownText.h"

#include <exception>
#include <iostream>

namespace tools {

int runProgram(const Program& program, int count, char** words,
               const std::function<int(const CommandLine&)>& run) {
    constexpr int kWrongUsage = 2;
    const std::string name = program.name;
    const auto complain = [](const std::string& text) {
        std::string shown;
        logreader::appendShown(shown, text, "  ");
        std::cerr << shown << std::endl;
    };
    int status = 0;
    try {
        const CommandLine given(count, words, program.options);
        if (given.has('h')) {
            std::cout << program.help;
        } else if (given.has('V')) {
            std::cout << name << " " << program.version << "\n";
        } else {
            status = run(given);
        }
    } catch (const UsageError& error) {
        complain(name + ": " + error.what());
        std::cerr << "Try " << name << " --help." << std::endl;
        return kWrongUsage;
    } catch (const std::exception& error) {
        complain((program.signs ? name + ": " : "") + error.what());
        status = program.failed;
    }
    if (!std::cout.flush()) {
        complain(name + ": the output could not be written");
        return program.failed;
    }
    return status;
}

}  // namespace tools
