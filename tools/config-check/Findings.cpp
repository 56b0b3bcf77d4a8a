#include "Finding.h"

#include <algorithm>
#include <tuple>

namespace check {

void Findings::sort() {
    std::stable_sort(all_.begin(), all_.end(), [](const Finding& a, const Finding& b) {
        return std::tie(a.position, a.severity) < std::tie(b.position, b.severity);
    });
}

}  // namespace check
