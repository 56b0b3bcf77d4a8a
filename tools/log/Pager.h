#pragma once

#include <cstdio>

namespace logreader {

/// A program that shows the output page by page: what the variable PAGER says, less, or more. Output that is shorter than
/// the terminal stays on it.
class Pager final {
  public:
    /// Not `wanted`, or no terminal: there is none.
    explicit Pager(bool wanted);
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;
    /// Waits until its user has left it.
    ~Pager();

    /// Where the output goes.
    std::FILE* output() const { return pipe_ != nullptr ? pipe_ : stdout; }

  private:
    std::FILE* pipe_ = nullptr;
};

}  // namespace logreader
