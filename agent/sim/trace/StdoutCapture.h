// What the module, and programs that it runs, write to standard output.
#pragma once

#include <string>

namespace sim {

/// Takes the process's standard output over, from its creation to its end.
class StdoutCapture final {
  public:
    /// Throws std::system_error when the output cannot be taken over.
    StdoutCapture();
    StdoutCapture(const StdoutCapture&) = delete;
    StdoutCapture& operator=(const StdoutCapture&) = delete;
    ~StdoutCapture();

    /// What was written since the last call.
    std::string take();

  private:
    /// The result of a call of the C library. Throws std::system_error when it is negative.
    static int checked(int result, const char* what);

    int original_ = -1;
    int collected_ = -1;
};

}  // namespace sim
