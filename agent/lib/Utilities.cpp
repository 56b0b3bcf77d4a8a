#include "platform/agent/Utilities.h"

#include "lib/Insides.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

namespace KRX::Utils {

VoidArray::~VoidArray() {
    delete[] entries_;
}

std::int8_t VoidArray::AddEntry(void* entry) {
    if (count_ == capacity_) {
        const int capacity = capacity_ == 0 ? 8 : capacity_ * 2;
        auto* entries = new (std::nothrow) void*[static_cast<std::size_t>(capacity)];
        if (entries == nullptr) {
            return -1;
        }
        std::copy_n(entries_, count_, entries);
        delete[] entries_;
        entries_ = entries;
        capacity_ = capacity;
    }
    entries_[count_++] = entry;
    return 0;
}

std::int8_t VoidArray::RemoveEntry(void* entry) {
    void** end = entries_ + count_;
    void** found = std::find(entries_, end, entry);
    if (found == end) {
        return -1;
    }
    std::copy(found + 1, end, found);
    --count_;
    return 0;
}

}  // namespace KRX::Utils

std::int8_t delanddup(char*& target, const char* text) {
    // The old text goes last: `text` may be a part of it.
    const std::unique_ptr<char[]> old(target);
    target = nullptr;
    if (text == nullptr) {
        return 0;
    }
    const std::size_t size = std::strlen(text) + 1;
    target = new (std::nothrow) char[size];
    if (target == nullptr) {
        return -1;
    }
    std::memcpy(target, text, size);
    return 0;
}

namespace agent {

void* entryOf(const KRX::Utils::VoidArray& list, int index) {
    struct Inside final : KRX::Utils::VoidArray {
        static void** entries(const VoidArray& other) { return other.*&Inside::entries_; }
    };
    return index < 0 || index >= list.GetCount() ? nullptr : Inside::entries(list)[index];
}

}  // namespace agent
