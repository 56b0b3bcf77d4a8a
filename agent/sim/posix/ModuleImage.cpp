#include "sim/posix/ModuleImage.h"

#include <algorithm>
#include <stdexcept>

#include <dlfcn.h>
#include <link.h>

namespace sim {

namespace {

/// Copies word by word, since a sanitizer's gaps between variables must not be read in its eyes.
__attribute__((no_sanitize("address"))) void copyWords(const volatile std::uintptr_t* from, std::size_t count,
                                                       std::uintptr_t* target) {
    for (std::size_t i = 0; i < count; ++i) {
        target[i] = from[i];
    }
}

}  // namespace

ModuleImage::ModuleImage(void* library) {
    link_map* map = nullptr;
    if (::dlinfo(library, RTLD_DI_LINKMAP, static_cast<void*>(&map)) == 0) {
        base_ = map->l_addr;
        ::dl_iterate_phdr(measure, this);
    }
    if (begin_ >= end_) {
        throw std::runtime_error("the module cannot be found in memory");
    }
}

void ModuleImage::keepData() const {
    static auto* const kept = new std::vector<std::vector<std::uintptr_t>>;
    for (const auto& [begin, end] : data_) {
        std::vector<std::uintptr_t>& words = kept->emplace_back((end - begin) / sizeof(std::uintptr_t));
        // NOLINTNEXTLINE(performance-no-int-to-ptr): addresses are what the loader tells
        copyWords(reinterpret_cast<const volatile std::uintptr_t*>(begin), words.size(), words.data());
    }
}

int ModuleImage::measure(dl_phdr_info* info, std::size_t /*size*/, void* self) {
    ModuleImage& image = *static_cast<ModuleImage*>(self);
    if (info->dlpi_addr != image.base_) {
        return 0;
    }
    constexpr std::uintptr_t word = sizeof(std::uintptr_t);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& segment = info->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD) {
            continue;
        }
        const std::uintptr_t begin = image.base_ + segment.p_vaddr;
        const std::uintptr_t end = begin + segment.p_memsz;
        image.begin_ = std::min(image.begin_, begin);
        image.end_ = std::max(image.end_, end);
        if ((segment.p_flags & PF_W) != 0) {
            image.data_.emplace_back((begin + word - 1) / word * word, end);
        }
    }
    return 1;
}

}  // namespace sim
