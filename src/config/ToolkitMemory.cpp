#include "config/ToolkitMemory.h"

#include <new>

#include <xercesc/util/OutOfMemoryException.hpp>

/// Stands in front of each block and keeps it aligned.
struct alignas(std::max_align_t) ToolkitMemory::Header {
    Header* earlier;
    Header* later;
    std::size_t cost;
};

namespace {

constexpr std::size_t kAllocatorCost = 16;  // of the system's own, a block

}  // namespace

ToolkitMemory::~ToolkitMemory() {
    for (Header* block = latest_; block != nullptr;) {
        Header* const earlier = block->earlier;
        ::operator delete(block);
        block = earlier;
    }
}

void* ToolkitMemory::allocate(XMLSize_t size) {
    // A document of many small parts is mostly what its blocks cost beyond their size.
    const std::size_t cost = size + sizeof(Header) + kAllocatorCost;
    if (cost < size || cost > liveLimit_ - live_ || cost > totalLimit_ - total_) {
        throw xercesc::OutOfMemoryException();
    }
    void* const memory = ::operator new(size + sizeof(Header), std::nothrow);
    if (memory == nullptr) {
        throw xercesc::OutOfMemoryException();
    }
    live_ += cost;
    total_ += cost;
    auto* const block = new (memory) Header{latest_, nullptr, cost};
    if (latest_ != nullptr) {
        latest_->later = block;
    }
    latest_ = block;
    return block + 1;
}

void ToolkitMemory::deallocate(void* memory) {
    if (memory == nullptr) {
        return;
    }
    Header* const block = static_cast<Header*>(memory) - 1;
    live_ -= block->cost;
    (block->later != nullptr ? block->later->earlier : latest_) = block->earlier;
    if (block->earlier != nullptr) {
        block->earlier->later = block->later;
    }
    ::operator delete(block);
}
