// The file that a page goes to.
#pragma once

#include <functional>
#include <ostream>
#include <string>

namespace session {

class PageFile final {
  public:
    /// Looks whether the page can be written there, and leaves an existing file alone. Throws std::runtime_error
    /// naming path and reason.
    explicit PageFile(std::string path);

    /// Puts what `write` writes in place of what the file holds, in one step: readers find the one or the other.
    /// Throws as the constructor does.
    void write(const std::function<void(std::ostream&)>& write);

  private:
    std::string path_;
    std::string written_;  ///< the new file, which is then
    std::string renamed_;  ///< to this one
};

}  // namespace session
