#include "support/Workspace.h"

#include "support/Program.h"

#include <fstream>
#include <iterator>
#include <set>

namespace support {

Workspace::Workspace() {
    root_ = newDirectory();
    std::filesystem::create_directories(root_ / "log");
    std::filesystem::create_directories(root_ / "state");
}

Workspace::~Workspace() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

void Workspace::write(const std::string& name, const std::string& text) const {
    std::filesystem::create_directories((root_ / name).parent_path());
    std::ofstream(root_ / name, std::ios::binary) << text;
}

std::string Workspace::read(const std::string& name) const {
    std::ifstream file(root_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string Workspace::list(const std::string& folder) const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(root_ / folder)) {
        names.insert(entry.path().filename().string());
    }
    std::string text;
    for (const std::string& name : names) {
        text += text.empty() ? name : " " + name;
    }
    return text;
}

}  // namespace support
