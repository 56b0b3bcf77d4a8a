// What was started, to be started again.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sim {

class StartLines final {
  public:
    /// A verb of a trace that was carried out; one that starts nothing is passed over.
    void note(const std::string& verb);
    /// The lines that start again what was started last, in the order of their first start; empty when nothing was.
    const std::vector<std::string>& lines() const { return lines_; }

  private:
    static constexpr std::string_view kStart = "start ";

    std::vector<std::string> lines_;
};

}  // namespace sim
