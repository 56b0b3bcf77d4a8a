#pragma once

#include "platform/Mutex.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform {

/// The texts that were left to the thread which is writing to standard output. The module has one of these.
/// Any thread adds texts; one at a time takes them.
class KeptTexts final {
  public:
    static constexpr std::size_t kKeptAtMost =
        1U << 20U;  ///< bytes; texts beyond that are lost, each as a whole
    static constexpr std::size_t kTakenAtOnce = 1024;

    void keep(std::string_view text) noexcept;
    std::size_t size() const noexcept { return static_cast<std::size_t>(kept_ - taken_); }
    bool isAny() const noexcept { return size() != 0; }
    /// Does more than look: one thread keeps a text and then tries for the writer's role, another gives the
    /// role back and then calls this. At least one of the two finds what it looks for.
    bool isAnyAfterAll() noexcept { return kept_.fetch_add(0) != taken_; }
    /// Moves the next piece into `buffer`. When the thread ends before it has written it, the piece is lost,
    /// and no more.
    std::string_view take(std::array<char, kTakenAtOnce>& buffer) noexcept;

  private:
    static std::array<char, kKeptAtMost> ring_;  // memory of the system's only where something was kept

    Mutex mutex_;
    std::atomic<std::uint64_t> kept_{0};  ///< bytes in all, like the next one
    std::atomic<std::uint64_t> taken_{0};
};

/// Writes a text to standard output behind those that were kept, or leaves it to the thread that is writing.
/// `Output` holds the `texts`; a `Writer` is made of it and has the writer's role while it lives, if that was
/// available.
template <typename Writer, typename Output>
void writeOrKeep(std::string_view text, Output& output) noexcept {
    bool isOut = false;
    do {
        const Writer writer(output);
        if (writer.isWriter()) {
            std::array<char, KeptTexts::kTakenAtOnce> piece;
            while (output.texts.isAny()) {
                writer.write(output.texts.take(piece));
            }
            if (!isOut) {
                writer.write(text);
            }
        } else if (!isOut) {
            output.texts.keep(text);
        } else {
            return;  // the holder of the role looks at the kept texts when giving it back
        }
        isOut = true;
    } while (output.texts.isAnyAfterAll());
}

}  // namespace platform
