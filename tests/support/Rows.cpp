#include "support/Rows.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <set>

#include <gtest/gtest.h>

namespace support {

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
    return text;
}
namespace {

class RowTest final : public testing::Test {
  public:
    explicit RowTest(std::function<void()> body) : body_(std::move(body)) {}
    void TestBody() override { body_(); }

  private:
    std::function<void()> body_;
};

std::string testName(const std::string& text) {
    std::string name;
    for (const char one : text) {
        if (std::isalnum(static_cast<unsigned char>(one)) != 0) {
            name += one;
        } else if (!name.empty() && name.back() != '_') {
            name += '_';
        }
    }
    return name.substr(0, name.find_last_not_of('_') + 1);
}

}  // namespace

void registerRow(const std::string& suite, const RowName& name, std::function<void()> body) {
    static std::set<std::string> known;
    const std::string test = testName(name.text);
    if (test.empty() || !known.insert(suite + "." + test).second) {
        std::fprintf(stderr, "%s:%d: no name, or twice the same: '%s'\n", name.file, name.line, test.c_str());
        std::abort();
    }
    testing::RegisterTest(suite.c_str(), test.c_str(), nullptr, nullptr, name.file, name.line,
                          [body = std::move(body)]() -> testing::Test* { return new RowTest(body); });
}

}  // namespace support
