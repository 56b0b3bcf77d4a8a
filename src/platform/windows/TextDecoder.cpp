#include "platform/TextDecoder.h"

#include "System.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace platform {
namespace {

struct CodePage {
    const char* name;
    UINT number;
};

// Those whose name does not hold its number.
constexpr CodePage kCodePages[] = {{"KOI8-R", 20866},  {"KOI8-U", 21866}, {"MACINTOSH", 10000},
                                   {"SHIFT_JIS", 932}, {"EUC-JP", 20932}, {"ISO-2022-JP", 50220},
                                   {"GB2312", 936},    {"GBK", 936},      {"GB18030", 54936},
                                   {"BIG5", 950},      {"EUC-KR", 51949}, {"TIS-620", 874}};

UINT codePageOf(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    for (const CodePage& page : kCodePages) {
        if (name == page.name) {
            return page.number;
        }
    }
    const std::size_t digits = name.find_first_of("0123456789");
    const bool isNumbered =
        digits != std::string::npos &&
        (name.starts_with("WINDOWS-") || name.starts_with("CP") || name.starts_with("IBM"));
    return isNumbered ? static_cast<UINT>(std::atoi(name.c_str() + digits)) : 0;
}

}  // namespace

TextDecoder::TextDecoder(const std::string& encoding)
    : converter_(reinterpret_cast<void*>(static_cast<std::uintptr_t>(codePageOf(encoding)))) {
    if (const auto page = static_cast<UINT>(reinterpret_cast<std::uintptr_t>(converter_));
        ::IsValidCodePage(page) == 0) {
        converter_ = nullptr;
    }
}

TextDecoder::~TextDecoder() = default;

bool TextDecoder::isOpen() const noexcept {
    return converter_ != nullptr;
}

std::size_t TextDecoder::decode(std::string_view bytes, std::string& utf8) {
    const auto page = static_cast<UINT>(reinterpret_cast<std::uintptr_t>(converter_));
    const int size = static_cast<int>(bytes.size());
    // Some code pages have no such flag: invalid bytes cannot be recognised there.
    DWORD flags = MB_ERR_INVALID_CHARS;
    int length = ::MultiByteToWideChar(page, flags, bytes.data(), size, nullptr, 0);
    if (length == 0 && ::GetLastError() == ERROR_INVALID_FLAGS) {
        flags = 0;
        length = ::MultiByteToWideChar(page, flags, bytes.data(), size, nullptr, 0);
    }
    if (length <= 0) {
        return 0;
    }
    std::vector<wchar_t> wide(static_cast<std::size_t>(length));
    ::MultiByteToWideChar(page, flags, bytes.data(), size, wide.data(), length);
    const int needed = ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    const std::size_t before = utf8.size();
    utf8.resize(before + static_cast<std::size_t>(needed));
    ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data() + before, needed, nullptr, nullptr);
    return bytes.size();
}

}  // namespace platform
