// The buttons and forms of the live page.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sim {

/// The lines that do what the form `name` asks for with the values in `json`, an object. `starts` are
/// those of a restart. No form takes a path. Throws std::runtime_error with the reason when a value is
/// missing or cannot be.
std::vector<std::string> linesOfForm(const std::string& name, std::string_view json,
                                     const std::vector<std::string>& starts);
/// Whether there is a form of that name.
bool isForm(const std::string& name);

}  // namespace sim
