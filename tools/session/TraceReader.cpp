#include "session/TraceReader.h"

#include "session/SessionRecord.h"

#include <stdexcept>

namespace session {

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
            throw std::runtime_error(file + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    if (trace.bad()) {
        throw std::runtime_error(file + ": cannot be read");
    }
    return true;
}

}  // namespace session
