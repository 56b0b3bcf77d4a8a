#pragma once

#include <filesystem>
#include <string>

namespace support {

/// A directory of a test's own, with the "log" and "state" folders that the example configuration names;
/// removed with the object.
class Workspace final {
  public:
    Workspace();
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    ~Workspace();

    std::filesystem::path path(const std::string& name) const { return root_ / name; }
    void write(const std::string& name, const std::string& text) const;
    /// A file's contents, empty when there is none.
    std::string read(const std::string& name) const;
    bool exists(const std::string& name) const { return std::filesystem::exists(root_ / name); }
    /// Names in a folder, sorted.
    std::string list(const std::string& folder) const;

  private:
    std::filesystem::path root_;
};

}  // namespace support
