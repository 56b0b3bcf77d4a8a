#pragma once

#include <string>
#include <vector>

namespace platform {

/// Appends the names of all entries of a directory, "." and ".." included, in alphabetical order. 0, or the
/// error number when the directory cannot be opened (2 for what is not there as a directory). Throws only
/// when memory runs out.
int listDirectory(const std::string& directory, std::vector<std::string>& names);

}  // namespace platform
