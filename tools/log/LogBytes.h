#pragma once

#include "platform/File.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace logreader {

/// The bytes of a log file or an archive from its beginning on; files compressed by gzip come out decompressed.
class LogBytes final {
  public:
    /// `file` must stay open as long as this lives.
    explicit LogBytes(const platform::File& file);
    LogBytes(const LogBytes&) = delete;
    LogBytes& operator=(const LogBytes&) = delete;
    ~LogBytes();

    /// Fills a buffer with what follows; 0 when there is no more, or not yet. Throws std::runtime_error when the
    /// file cannot be read.
    std::size_t read(char* buffer, std::size_t size);
    /// How far the file itself has been read.
    std::uint64_t position() const { return position_; }

  private:
    struct Inflation;

    std::size_t readFile(char* buffer, std::size_t size);

    const platform::File& file_;
    std::uint64_t position_ = 0;
    std::unique_ptr<Inflation> inflation_;  ///< null for a file that is not compressed
};

}  // namespace logreader
