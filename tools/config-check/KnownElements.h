// The elements that the module knows, and where it reads each of them.
#pragma once

#include "ModuleConfiguration.h"

#include <optional>
#include <string>
#include <vector>

namespace check {

struct KnownElement {
    enum class Holds : std::uint8_t { elements, text, flag };

    Tag tag;
    Holds holds;
    std::vector<Tag> parents;   ///< the sections that it is read in; empty for a child of the root
    bool direct = false;        ///< counts only as a child of its parent, not deeper in it
    bool oddlySpelled = false;  ///< the name looks like a slip and is none
};

class KnownElements final {
  public:
    /// Takes the names from the module; the XML toolkit must be running.
    KnownElements() : names_(elementNames()) {}

    static const std::vector<KnownElement>& all();
    static const KnownElement& of(Tag tag);

    const std::string& name(Tag tag) const { return names_[tag]; }
    std::optional<Tag> find(const std::string& name) const;
    /// The element that was meant by a name that none has, inside `section` or, without one, in the root.
    std::optional<Tag> meantBy(const std::string& name, std::optional<Tag> section) const;
    /// Where an element is read, as in "'Message' is read directly in ...".
    std::string placeOf(Tag tag) const;

  private:
    std::array<std::string, kTagCount> names_;
};

/// Letters changed, left out, added or swapped between two texts, letter case aside.
std::size_t difference(const std::string& one, const std::string& other);

}  // namespace check
