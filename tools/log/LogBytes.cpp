#include "LogBytes.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string_view>
#include <zlib.h>

namespace logreader {

namespace {

constexpr std::string_view kGzip = "\x1f\x8b";
constexpr std::size_t kReadAtOnce = 16384;
constexpr int kGzipWindow = 15 + 16;  // the largest window; 16 stands for gzip's form

}  // namespace

struct LogBytes::Inflation {
    Inflation() {
        if (::inflateInit2(&stream, kGzipWindow) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    Inflation(const Inflation&) = delete;
    Inflation& operator=(const Inflation&) = delete;
    ~Inflation() { ::inflateEnd(&stream); }

    z_stream stream{};
    std::array<unsigned char, kReadAtOnce> input{};
    bool betweenMembers = true;  ///< a file may hold several, one behind the other
};

LogBytes::LogBytes(const platform::File& file) : file_(file) {
    std::array<char, kGzip.size()> begin{};
    if (file.readStart(begin.data(), begin.size()) == begin.size() &&
        std::string_view(begin.data(), begin.size()) == kGzip) {
        inflation_ = std::make_unique<Inflation>();
    }
}

LogBytes::~LogBytes() = default;

std::size_t LogBytes::readFile(char* buffer, std::size_t size) {
    const std::ptrdiff_t length = file_.readAt(position_, buffer, size);
    if (length < 0) {
        throw std::runtime_error(std::strerror(errno));
    }
    position_ += static_cast<std::uint64_t>(length);
    return static_cast<std::size_t>(length);
}

std::size_t LogBytes::read(char* buffer, std::size_t size) {
    if (!inflation_) {
        return readFile(buffer, size);
    }
    z_stream& stream = inflation_->stream;
    stream.next_out = reinterpret_cast<unsigned char*>(buffer);
    stream.avail_out = static_cast<unsigned>(size);
    while (stream.avail_out == size) {
        if (stream.avail_in == 0) {
            stream.next_in = inflation_->input.data();
            stream.avail_in = static_cast<unsigned>(
                readFile(reinterpret_cast<char*>(inflation_->input.data()), inflation_->input.size()));
            if (stream.avail_in == 0) {
                if (inflation_->betweenMembers) {
                    return 0;
                }
                throw std::runtime_error("the compressed file ends in its middle");
            }
        }
        if (inflation_->betweenMembers && *stream.next_in == 0) {
            ++stream.next_in;  // padding, as of a copy that ends in whole blocks
            --stream.avail_in;
            continue;
        }
        inflation_->betweenMembers = false;
        const int result = ::inflate(&stream, Z_NO_FLUSH);
        if (result == Z_STREAM_END) {
            inflation_->betweenMembers = true;
            ::inflateReset(&stream);
        } else if (result != Z_OK && result != Z_BUF_ERROR && stream.avail_out == size) {
            throw std::runtime_error("not what gzip has written");
        }
    }
    return size - stream.avail_out;
}

}  // namespace logreader
