// The elements that the module knows, and where it reads each of them.
#pragma once

#include "config/Settings.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace check {

using Tag = TagNames::Tag;
inline constexpr TagNames kTags;

struct KnownElement {
    Tag tag;
    bool holdsElements;        ///< as a section and a list do
    std::vector<Tag> parents;  ///< the sections that it is read in; empty for a child of the root
};

/// From the module's own table of settings, in its order.
const std::vector<KnownElement>& knownElements();
const KnownElement& knownElement(Tag tag);

std::optional<Tag> findTag(std::string_view name);
bool isSection(Tag tag);
/// The name looks like a slip but is not.
bool isOddlySpelled(Tag tag);
/// The element that was meant by a name that none has, inside `section` or, without one, in the root.
std::optional<Tag> meantBy(const std::string& name, std::optional<Tag> section);
/// Where an element is read, as in "'Message' is read directly in ...".
std::string placeOf(Tag tag);
/// What a section may hold, for the end of a sentence; empty without one.
std::string namesIn(std::optional<Tag> section);

}  // namespace check
