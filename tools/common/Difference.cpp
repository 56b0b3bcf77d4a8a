#include "common/Difference.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>
#include <vector>

namespace tools {

std::string lowered(std::string_view given) {
    std::string text(given);
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::size_t difference(std::string_view one, std::string_view other) {
    const std::string a = lowered(one);
    const std::string b = lowered(other);
    std::vector<std::size_t> before;
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        before = std::exchange(last, row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0U : 1U)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[j] = std::min(row[j], before[j - 2] + 1);
            }
        }
    }
    return row.back();
}

}  // namespace tools
