#include "Stamp.h"

namespace logreader {

namespace {

/// Takes apart a text from its front.
class Cursor final {
  public:
    explicit Cursor(std::string_view text) : rest_(text), length_(text.size()) {}

    bool take(std::string_view expected) {
        if (!rest_.starts_with(expected)) {
            return false;
        }
        rest_.remove_prefix(expected.size());
        return true;
    }

    /// A number of `shortest` to `longest` digits without leading zeros.
    bool takeNumber(std::size_t shortest, std::size_t longest, int& number) {
        std::size_t digits = 0;
        number = 0;
        while (digits < rest_.size() && rest_[digits] >= '0' && rest_[digits] <= '9') {
            if (++digits > longest) {
                return false;
            }
            number = number * 10 + (rest_[digits - 1] - '0');
        }
        if (digits < shortest || (digits > 1 && rest_.front() == '0')) {
            return false;
        }
        rest_.remove_prefix(digits);
        return true;
    }

    std::size_t taken() const { return length_ - rest_.size(); }

  private:
    std::string_view rest_;
    std::size_t length_;
};

}  // namespace

std::optional<Stamp> readStamp(std::string_view text) {
    Cursor cursor(text);
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (!cursor.take("Date:") || !cursor.takeNumber(4, 4, year) || !cursor.take("-") ||
        !cursor.takeNumber(1, 2, month) || !cursor.take("-") || !cursor.takeNumber(1, 2, day) ||
        !cursor.take(" Time:") || !cursor.takeNumber(1, 2, hour) || !cursor.take(":") ||
        !cursor.takeNumber(1, 2, minute) || !cursor.take(":") || !cursor.takeNumber(1, 2, second) ||
        !cursor.take(" :: ")) {
        return std::nullopt;
    }
    const auto date = std::chrono::year(year) / month / day;
    constexpr int kLeapSecond = 60;
    if (!date.ok() || hour > 23 || minute > 59 || second > kLeapSecond) {
        return std::nullopt;
    }
    return Stamp{std::chrono::local_days(date) + std::chrono::hours(hour) + std::chrono::minutes(minute) +
                     std::chrono::seconds(second),
                 cursor.taken()};
}

}  // namespace logreader
