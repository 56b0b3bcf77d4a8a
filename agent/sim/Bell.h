#pragma once

namespace sim {

/// Wakes the host's thread where it waits for input, from any thread.
class Bell final {
  public:
    /// Throws std::system_error when there is none to be had.
    Bell();
    Bell(const Bell&) = delete;
    Bell& operator=(const Bell&) = delete;
    ~Bell();

    /// Readable while it was rung more often than answered; for `Input`.
    int descriptor() const { return descriptor_; }
    void ring();
    void answer();

  private:
    int descriptor_ = -1;
};

}  // namespace sim
