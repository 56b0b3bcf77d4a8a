#include "Beginning.h"

#include "LogBytes.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <stdexcept>
#include <utility>

namespace logreader {

Beginning beginningOf(const platform::File& file) {
    Beginning beginning;
    if (!file.isOpen()) {
        return beginning;
    }
    if (const auto modified = file.modifiedAt()) {
        beginning.modified = std::chrono::sys_seconds(std::chrono::seconds(*modified));
    }
    try {
        constexpr std::size_t kEnoughForOne = 16384;
        LogBytes bytes(file);
        std::size_t left = kEnoughForOne;
        EntryReader reader(
            [&](char* buffer, std::size_t size) {
                const std::size_t length = bytes.read(buffer, std::min(size, left));
                left -= length;
                return length;
            },
            kEnoughForOne);
        Entry entry;
        bool first = true;
        while (!beginning.clock && (reader.next(entry) || reader.rest(entry))) {
            beginning.clock = entry.clock;
            if (std::exchange(first, false)) {
                beginning.mark = markOf(entry);
                beginning.clean = entry.clock.has_value();
            }
        }
    } catch (const std::runtime_error&) {
        // The reader of the file will say so.
    }
    return beginning;
}

std::uint64_t markOf(const Entry& entry) {
    // FNV-1a, 64 bits.
    std::uint64_t mark = 0xcbf29ce484222325;
    const auto add = [&mark](unsigned char byte) { mark = (mark ^ byte) * 0x100000001b3; };
    auto clock = static_cast<std::uint64_t>(entry.clock ? entry.clock->time_since_epoch().count() : -1);
    for (int count = 0; count < 8; ++count, clock >>= 8U) {
        add(static_cast<unsigned char>(clock));
    }
    for (const char byte : entry.text) {
        add(static_cast<unsigned char>(byte));
    }
    return mark;
}

std::string FileMarks::next(std::optional<std::chrono::local_seconds> clock, std::uint64_t mark) {
    if (clock != std::exchange(clock_, clock)) {
        seen_.clear();
    }
    const int before = seen_[mark]++;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), before > 0 ? "%016" PRIx64 ".%d" : "%016" PRIx64, mark, before);
    return text.data();
}

}  // namespace logreader
