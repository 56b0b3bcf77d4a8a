// The page of a session.
#pragma once

#include <string>

namespace session {

class SessionRecord;

/// One HTML file that needs nothing else. A live one follows the session of the program that serves it, and
/// leaves it to that program to tell the policy. `below`: a second session, on the same axis.
std::string sessionPage(const SessionRecord& session, bool live, const SessionRecord* below = nullptr);
/// The page's Content-Security-Policy: its own style and script, and what a live one asks the program for.
std::string pagePolicy(bool live);

}  // namespace session
