// The agent's utility library, as the module uses it.
#pragma once

#include "platform/agent/Api.h"

#include <cstdint>

namespace KRX::Utils {

/// A growable list of pointers that are not owned.
class KRX_API VoidArray {
  public:
    VoidArray() = default;
    VoidArray(const VoidArray&) = delete;
    VoidArray& operator=(const VoidArray&) = delete;
    virtual ~VoidArray();

    /// Appends an entry. 0 on success.
    std::int8_t AddEntry(void* entry);
    /// Takes out the first entry equal to `entry` without releasing it. 0 on success.
    std::int8_t RemoveEntry(void* entry);

    /// The number of entries.
    int GetCount() const { return count_; }

  protected:
    void** entries_ = nullptr;
    int count_ = 0;
    int capacity_ = 0;
};

}  // namespace KRX::Utils

/// Releases what `target` held (a character array) and stores a fresh copy of `text` in it; a null text is
/// accepted and stored as null. 0 on success; on failure the target is null.
KRX_API std::int8_t delanddup(char*& target, const char* text);
