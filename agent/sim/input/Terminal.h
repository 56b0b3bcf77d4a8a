// A person at the keyboard.
#pragma once

#include <cstdio>
#include <deque>
#include <memory>
#include <string>

namespace sim {

/// Line editing with history and completion on standard input and output, which are a terminal. There is one
/// at most, and one thread at a time uses it.
class Terminal final {
  public:
    /// Null when standard input or output is not a terminal.
    static std::unique_ptr<Terminal> open();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal();

    /// Takes what was typed. Complete lines come to `lines`; false at the end of the input.
    bool read(std::deque<std::string>& lines);
    /// Takes away what was typed of a line; false when that is nothing.
    bool clearLine();
    /// Gives the terminal back as it was found; the object must not be used any more.
    void close();

    /// Takes the line that is being typed away while something else is printed.
    class Hidden final {
      public:
        /// Does nothing without a terminal.
        explicit Hidden(Terminal* terminal);
        Hidden(const Hidden&) = delete;
        Hidden& operator=(const Hidden&) = delete;
        ~Hidden();

      private:
        Terminal* terminal_;
    };

  private:
    explicit Terminal(std::FILE* output);

    std::FILE* output_;
    bool shown_ = false;
};

}  // namespace sim
