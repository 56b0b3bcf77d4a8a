// The file that a page goes to.
#pragma once

#include <string>
#include <string_view>

namespace sim {

class PageFile final {
  public:
    /// Looks whether the page can be written there, and leaves an existing file alone. Throws std::runtime_error
    /// naming path and reason.
    explicit PageFile(std::string path);

    /// Puts `page` in place of what the file holds, in one step: readers find the one or the other.
    /// Throws as the constructor does.
    void write(std::string_view page);

  private:
    std::string path_;
    std::string written_;  ///< the new file, which is then
    std::string renamed_;  ///< to this one
};

}  // namespace sim
