#include "platform/portable/KeptTexts.h"

#include "platform/portable/Lock.h"

#include <algorithm>

namespace platform {

std::array<char, KeptTexts::kKeptAtMost> KeptTexts::ring_;

void KeptTexts::keep(std::string_view text) noexcept {
    const Lock lock(mutex_);
    const std::uint64_t end = kept_;
    if (!lock.isHeld() || text.size() > kKeptAtMost - (end - taken_)) {
        return;
    }
    const std::size_t start = end % kKeptAtMost;
    const std::size_t first = std::min(text.size(), kKeptAtMost - start);
    std::copy_n(text.begin(), first, ring_.begin() + static_cast<std::ptrdiff_t>(start));
    std::copy(text.begin() + static_cast<std::ptrdiff_t>(first), text.end(), ring_.begin());
    kept_ += text.size();
}

std::string_view KeptTexts::take(std::array<char, kTakenAtOnce>& buffer) noexcept {
    const std::size_t start = taken_ % kKeptAtMost;
    const std::size_t size =
        std::min({buffer.size(), static_cast<std::size_t>(kept_ - taken_), kKeptAtMost - start});
    std::copy_n(ring_.begin() + static_cast<std::ptrdiff_t>(start), size, buffer.begin());
    taken_ += size;
    return {buffer.data(), size};
}

}  // namespace platform
