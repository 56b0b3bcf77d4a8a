#pragma once

#include <cstddef>

#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/util/PlatformUtils.hpp>

/// Memory for the XML toolkit, with bounds that keep a hostile document from taking the host's: whatever it
/// expands to, and however it does so, the parse ends with the toolkit's out-of-memory exception. Releases
/// what the toolkit, which loses a block when a parse ends that way, has not given back. Not for use by two
/// threads at once.
class ToolkitMemory final : public xercesc::MemoryManager {
  public:
    /// At most `live` bytes held at a time and `total` bytes handed out in all, the cost of keeping
    /// the blocks included.
    ToolkitMemory(std::size_t live, std::size_t total) noexcept : liveLimit_(live), totalLimit_(total) {}
    ToolkitMemory(const ToolkitMemory&) = delete;
    ToolkitMemory& operator=(const ToolkitMemory&) = delete;
    ~ToolkitMemory() override;

    void* allocate(XMLSize_t size) override;
    void deallocate(void* memory) override;
    /// What an exception needs must be there longer than this is.
    xercesc::MemoryManager* getExceptionMemoryManager() override {
        return xercesc::XMLPlatformUtils::fgMemoryManager;
    }

  private:
    struct Header;

    std::size_t liveLimit_;
    std::size_t totalLimit_;
    std::size_t live_ = 0;
    std::size_t total_ = 0;
    Header* latest_ = nullptr;  ///< the block handed out last, and through it all others
};
