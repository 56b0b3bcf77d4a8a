// Reading of the module's small tagged state files: one record of opening and closing tags without blanks,
// line breaks or escaping. First occurrences count, so what lies behind the record does no harm.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

namespace records {

constexpr std::size_t kValueSize = 100;  ///< characters of a value with its terminator; longer values are cut

/// The index behind the first occurrence of `tag` in `text`, 0 when there is none.
std::int32_t getTagEndIndex(const char* text, const char* tag) noexcept;

/// The characters from `start` up to the first occurrence of `closingTag`. Without the tag: "str not found";
/// when it lies at or before `start`: "string found but before the first string". Null, with a log line that
/// names `className`, when memory runs out.
std::unique_ptr<char[]> getStringBuffer(const char* text, const char* closingTag, std::int32_t start,
                                        const char* className);

/// Reads the value of `element` into `value`. False, and the value unchanged, when memory runs out.
bool readTaggedValue(const char* text, const char* element, char (&value)[kValueSize], const char* className);

/// One value of a record.
struct TaggedValue {
    const char* element;
    char (&value)[kValueSize];
    bool (*isUsable)(const char* text) noexcept;
};

/// Reads them all; `damaged` gets the first element whose value is of no use, if there is one. False when
/// memory ran out for one of them.
bool readTaggedValues(const char* text, std::span<const TaggedValue> values, const char* className,
                      const char*& damaged);

/// Copies a text into a value field, cut to what fits.
void copyValue(char (&value)[kValueSize], const char* text) noexcept;

}  // namespace records
