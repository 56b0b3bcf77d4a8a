#include "console/ClientStream.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>

namespace sim {

namespace {

constexpr std::size_t kBuffer = 4096;  // bytes
constexpr std::chrono::milliseconds kDrainTime(300);
constexpr std::size_t kDrained = std::size_t{1} << 20U;  // bytes

}  // namespace

ClientStream::ClientStream(socket_t socket, Limits limits)
    : socket_(socket),
      limits_(limits),
      deadline_(Clock::now() + limits.request),
      left_(limits.requestBytes) {}

bool ClientStream::waitFor(short what, Clock::time_point deadline) const {
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd watched = {socket_, what, 0};
        const int found = ::poll(&watched, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
        if (found >= 0 || errno != EINTR) {
            return found > 0;
        }
    }
}

bool ClientStream::is_readable() const {
    return taken_ < buffer_.size() || (left_ > 0 && waitFor(POLLIN, deadline_));
}

bool ClientStream::is_writable() const {
    return waitFor(POLLOUT, Clock::now() + limits_.write);
}

ssize_t ClientStream::read(char* target, std::size_t size) {
    if (taken_ == buffer_.size()) {
        if (!is_readable()) {
            return -1;
        }
        buffer_.resize(std::min(kBuffer, left_));
        const ssize_t received = ::recv(socket_, buffer_.data(), buffer_.size(), 0);
        buffer_.resize(static_cast<std::size_t>(std::max<ssize_t>(received, 0)));
        taken_ = 0;
        left_ -= buffer_.size();
        if (received <= 0) {
            return received;
        }
    }
    const std::size_t given = std::min(size, buffer_.size() - taken_);
    std::memcpy(target, buffer_.data() + taken_, given);
    taken_ += given;
    return static_cast<ssize_t>(given);
}

ssize_t ClientStream::write(const char* source, std::size_t size) {
    std::size_t sent = 0;
    while (sent < size) {
        if (!is_writable()) {
            return -1;
        }
        const ssize_t written = ::send(socket_, source + sent, size - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (written >= 0) {
            sent += static_cast<std::size_t>(written);
        } else if (errno != EINTR && errno != EAGAIN) {
            return -1;
        }
    }
    return static_cast<ssize_t>(size);
}

// Nobody asks: addresses stand in no response.
void ClientStream::get_remote_ip_and_port(std::string& ip, int& port) const {
    ip.clear();
    port = 0;
}

void ClientStream::get_local_ip_and_port(std::string& ip, int& port) const {
    ip.clear();
    port = 0;
}

void ClientStream::drain() {
    ::shutdown(socket_, SHUT_WR);
    const auto deadline = Clock::now() + kDrainTime;
    std::array<char, kBuffer> dropped = {};
    for (std::size_t size = 0; size < kDrained && waitFor(POLLIN, deadline);) {
        const ssize_t received = ::recv(socket_, dropped.data(), dropped.size(), MSG_DONTWAIT);
        if (received <= 0) {
            return;
        }
        size += static_cast<std::size_t>(received);
    }
}

}  // namespace sim
