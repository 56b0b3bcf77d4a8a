#pragma once

namespace sim {

/// Wakes a thread where it waits for input, from any thread.
class Bell final {
  public:
    /// Throws std::system_error when none is available.
    Bell();
    Bell(const Bell&) = delete;
    Bell& operator=(const Bell&) = delete;
    ~Bell();

    /// Readable from a ring until the next answer, which a reader gives before looking for anything new.
    int descriptor() const { return descriptor_; }
    void ring();
    void answer();

  private:
    int descriptor_ = -1;
};

}  // namespace sim
