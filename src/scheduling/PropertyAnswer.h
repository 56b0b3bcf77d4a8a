#pragma once

#include <span>

struct PropList;

/// One property of a command's answer.
struct AnswerEntry {
    const char* name;
    const char* value;
};

/// Stores a new list with copies of the entries in `response`, for the host to give back with
/// `ZPXRSMDSDestroyPropList`. Null when memory runs out: the command itself has been carried out all the
/// same. Nothing without a response slot.
void giveAnswer(PropList** response, std::span<const AnswerEntry> entries) noexcept;

/// Releases a list that was made here, or by the host likewise.
void releaseProperties(PropList* list) noexcept;
