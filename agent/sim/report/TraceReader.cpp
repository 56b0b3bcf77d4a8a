#include "sim/report/TraceReader.h"

#include "sim/Scenario.h"
#include "sim/report/SessionRecord.h"

#include <stdexcept>

namespace sim {

bool readTrace(std::istream& trace, const std::string& file, SessionRecord& session) {
    std::string line;
    for (int number = 1; std::getline(trace, line); ++number) {
        if (line.empty()) {
            continue;
        }
        try {
            session.addLine(line);
        } catch (const std::runtime_error& error) {
            if (trace.eof()) {
                return false;
            }
            throw std::runtime_error(located(file, number, error.what()));
        }
    }
    if (trace.bad()) {
        throw std::runtime_error(file + ": cannot be read");
    }
    return true;
}

}  // namespace sim
