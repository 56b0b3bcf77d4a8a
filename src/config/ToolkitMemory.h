#pragma once

#include <cstddef>

#include <xercesc/framework/MemoryManager.hpp>

/// Memory for the XML toolkit, with bounds that keep a hostile document from taking the host's: whatever it
/// expands to, and however it does so, the parse ends with the toolkit's out-of-memory exception. Not for use
/// by two threads at once.
class ToolkitMemory final : public xercesc::MemoryManager {
  public:
    /// At most `live` bytes held at a time and `total` bytes handed out in all.
    ToolkitMemory(std::size_t live, std::size_t total) noexcept : liveLimit_(live), totalLimit_(total) {}
    ToolkitMemory(const ToolkitMemory&) = delete;
    ToolkitMemory& operator=(const ToolkitMemory&) = delete;

    /// A manager without bounds that exists as long as the module does.
    static ToolkitMemory* unbounded() noexcept;

    void* allocate(XMLSize_t size) override;
    void deallocate(void* memory) override;
    xercesc::MemoryManager* getExceptionMemoryManager() override { return unbounded(); }

  private:
    std::size_t liveLimit_;
    std::size_t totalLimit_;
    std::size_t live_ = 0;
    std::size_t total_ = 0;
};
