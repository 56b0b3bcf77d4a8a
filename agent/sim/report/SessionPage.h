// The page of a session.
#pragma once

#include <string>

namespace sim {

class SessionRecord;

/// One HTML file that needs nothing else. A live one follows the session of the program that serves it.
std::string sessionPage(const SessionRecord& session, bool live);

}  // namespace sim
