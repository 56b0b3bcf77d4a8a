// The file that a page goes to.
#pragma once

#include <string>
#include <string_view>

namespace sim {

class PageFile final {
  public:
    /// Creates the file or opens it as it is. Throws std::runtime_error naming path and reason.
    explicit PageFile(std::string path);

    /// Puts `page` in place of what the file holds. Throws as the constructor does.
    void write(std::string_view page);

  private:
    std::string path_;
};

}  // namespace sim
