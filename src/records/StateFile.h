#pragma once

#include "platform/File.h"

#include <array>
#include <string>
#include <string_view>

namespace records {

/// One of the module's small files of state: it holds one record, which begins with its root tag, or nothing.
/// Anything else that is found at its path belongs to somebody else or is damaged: it is neither written to
/// nor deleted, but moved aside when a record is stored. Not for use by two threads at once.
class StateFile final {
  public:
    /// `rootTag` has to stay.
    explicit StateFile(std::string_view rootTag) noexcept : rootTag_(rootTag) {}

    /// A relative path is resolved when it is first given, whatever the working directory is later. Throws, and
    /// changes nothing, only when memory runs out.
    void setPath(const std::string& path);
    const std::string& path() const noexcept { return path_; }    ///< as given
    const std::string& place() const noexcept { return place_; }  ///< where that leads

    /// Opens what stands there now, made when missing, and holds that open; when it cannot be opened, what
    /// was held open stays. False when nothing is.
    bool open() noexcept;
    bool isOpen() const noexcept { return file_.isOpen(); }
    const platform::File& file() const noexcept { return file_; }
    void close() noexcept { file_.close(); }
    /// Closes the file, and deletes what stands there now, if that is empty or begins with this text.
    void remove(std::string_view start) noexcept;

    /// What to do with the end of an older, longer record.
    enum class Tail { Stays, Goes };
    using Suffix = std::array<char, 12>;
    /// A line for the log: a format, null for none, of the path, the path again, and the suffix.
    struct Notice {
        const char* format = nullptr;
        std::string path{};  ///< left to the caller
        Suffix suffix{};     ///< what the name of what was found ends in since it was moved aside
    };
    struct Stored {
        bool done = false;  ///< the record is on the disk
        Notice notice;      ///< of something else that was found
    };
    /// Stores a record of at most `File::kLargestRecord` bytes in what stands there now, if the file is held
    /// open. A process killed at any instant leaves the old record or the new one, and what was found instead
    /// of one.
    Stored store(std::string_view record, Tail tail) noexcept;

    /// For the log, when something else is found at a start: a format of the path.
    static constexpr char kForeign[] =
        "\n What is in file = %s is no record that can be read. It is left alone, and moved aside when a record is stored.";
    /// For the log, when a record is found with a value of no use: formats of the path and the value's
    /// element.
    static constexpr char kFollowed[] =
        "\n The record in file = %s is damaged: its %s is of no use. It is followed as far as it goes.";
    static constexpr char kUseless[] =
        "\n The record in file = %s is damaged: its %s is of no use. Nothing comes of it, and it is not kept.";

  private:
    /// The open file is empty, or begins with this text.
    bool begins(std::string_view start) const noexcept;
    /// Gives what stands there another name that is not taken; true when it was done.
    bool moveAside(Suffix& suffix) const noexcept;

    std::string_view rootTag_;
    std::string path_;
    std::string place_;
    platform::File file_;
};

}  // namespace records
