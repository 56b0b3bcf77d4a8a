// What the checker has to say about a file.
#pragma once

#include "config/Document.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace check {

/// Line 0 means no place, as for the command line.
using Position = config::Place;

enum class Severity : std::uint8_t {
    error,   ///< the text is not what is in force, or it cannot work
    warning  ///< it may be meant, but is more likely a mistake
};

struct Note {
    Position position;
    std::string text;
};

struct Finding {
    Severity severity = Severity::error;
    Position position;
    const char* kind = "";  ///< one word for scripts, the same for every finding of a rule
    std::string text;
    std::vector<Note> notes;
};

/// The findings of one file. A hostile file is full of mistakes: from a number on nobody reads them.
class Findings final {
  public:
    static constexpr std::size_t kMostKept = 100;

    Finding& add(Finding finding) {
        return full() ? surplus_ = std::move(finding) : all_.emplace_back(std::move(finding));
    }
    bool full() const { return all_.size() >= kMostKept; }
    /// In the order of the file, errors first where two stand at the same place.
    void sort() {
        std::stable_sort(all_.begin(), all_.end(), [](const Finding& a, const Finding& b) {
            return std::tie(a.position, a.severity) < std::tie(b.position, b.severity);
        });
    }
    const std::vector<Finding>& all() const { return all_; }

  private:
    std::vector<Finding> all_;
    Finding surplus_;
};

}  // namespace check
