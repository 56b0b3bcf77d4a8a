#include "config/ToolkitMemory.h"

#include <cstdint>
#include <new>

#include <xercesc/util/OutOfMemoryException.hpp>

namespace {

// Each block is preceded by its size, in as many bytes as keep the block aligned.
constexpr std::size_t kHeader = alignof(std::max_align_t);

}  // namespace

ToolkitMemory* ToolkitMemory::unbounded() noexcept {
    // Never destroyed (its storage is part of the module's): tag names are released late.
    alignas(ToolkitMemory) static unsigned char storage[sizeof(ToolkitMemory)];
    static ToolkitMemory* const manager = new (storage) ToolkitMemory(SIZE_MAX, SIZE_MAX);
    return manager;
}

void* ToolkitMemory::allocate(XMLSize_t size) {
    if (size > liveLimit_ - live_ || size > totalLimit_ - total_) {
        throw xercesc::OutOfMemoryException();
    }
    void* const block = ::operator new(size + kHeader, std::nothrow);
    if (block == nullptr) {
        throw xercesc::OutOfMemoryException();
    }
    live_ += size;
    total_ += size;
    *static_cast<std::size_t*>(block) = size;
    return static_cast<unsigned char*>(block) + kHeader;
}

void ToolkitMemory::deallocate(void* memory) {
    if (memory == nullptr) {
        return;
    }
    void* const block = static_cast<unsigned char*>(memory) - kHeader;
    live_ -= *static_cast<std::size_t*>(block);
    ::operator delete(block);
}
