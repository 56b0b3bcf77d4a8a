#include "Rules.h"

#include <unordered_set>

namespace check {
namespace {

/// The innermost element around this one that has a name of the module's.
std::optional<Tag> sectionAround(const Element& element) {
    for (const Element* around = element.parent; around != nullptr && around->parent != nullptr;
         around = around->parent) {
        if (const std::optional<Tag> tag = findTag(around->name)) {
            return tag;
        }
    }
    return std::nullopt;
}

/// The element of the same name and section that the module takes in this one's place.
const Element* takenInstead(const Element& element, Tag tag, const Inspection& in) {
    if (knownElement(tag).direct) {
        return nullptr;
    }
    for (const Element* around = element.parent; around != nullptr; around = around->parent) {
        if (!in.selection.looked.contains(around)) {
            continue;
        }
        for (const config::Reading& reading : in.selection.taken.readings) {
            if (reading.element->name == element.name) {
                for (const Element* up = reading.element->parent; up != nullptr; up = up->parent) {
                    if (up == around) {
                        return reading.element;
                    }
                }
            }
        }
    }
    return nullptr;
}

class StructureCheck final {
  public:
    explicit StructureCheck(const Inspection& inspection) : in_(inspection) {}

    void run() {
        checkRoot();
        for (const Element& element : in_.document.elements) {
            if (&element == &in_.root()) {
                continue;
            }
            if (in_.findings.full()) {
                return;
            }
            if (silent_.contains(element.parent)) {
                silent_.insert(&element);
            } else if (in_.selection.looked.contains(&element)) {
                checkLookedAt(element);
            } else if (const std::optional<Tag> tag = findTag(element.name)) {
                silent_.insert(&element);
                checkNotLookedAt(element, *tag);
            } else {
                checkUnknown(element);
            }
        }
        checkAttributes();
    }

  private:
    void checkRoot() {
        const Element& root = in_.root();
        if (findTag(root.name)) {
            in_.error(
                root.place, "root",
                shown(root.name) +
                    " is the root element here, whose name is not read; an element of any other name belongs around it");
        }
        checkStray(root, "it is not read");
    }

    void checkStray(const Element& element, const std::string& consequence) {
        if (element.stray != 0) {
            const Position start = in_.afterBlanks(element, element.stray);
            in_.error(start, "stray-text", "text directly in " + shown(element.name) + ": " + consequence);
        }
    }

    void checkLookedAt(const Element& element) {
        const Tag tag = in_.selection.looked.at(&element);
        if (knownElement(tag).holds != KnownElement::Holds::elements) {
            return;
        }
        const bool list = tag == TagNames::OpenMessage || tag == TagNames::CloseMessage;
        checkStray(element,
                   list ? "it is not read; each text stands in a 'Message' of its own" : "it is not read");
        if (element.parent == &in_.root()) {
            const Element*& earlier = sections_[tag];
            if (earlier != nullptr) {
                in_.warning(element.place, "repeated",
                            "a second " + shown(element.name) + ": what both set is taken from this one")
                    .notes.push_back({earlier->place, "the first one"});
            }
            earlier = &element;
        }
    }

    void checkNotLookedAt(const Element& element, Tag tag) {
        const Position position = element.place;
        const std::string place = check::placeOf(tag);
        if (element.fromEntity) {
            in_.error(
                position, "entity",
                shown(element.name) + " comes out of an entity; it is read only where it is written itself");
        } else if (const Element* const instead = takenInstead(element, tag, in_)) {
            in_.error(position, "duplicate",
                      "a second " + shown(element.name) +
                          " in the same section is not read; the first one counts")
                .notes.push_back({instead->place, "the first one"});
        } else {
            in_.error(position, "misplaced",
                      shown(element.name) + " is not read in " + shown(element.parent->name) +
                          "; it is read " + place);
        }
    }

    void checkUnknown(const Element& element) {
        const std::optional<Tag> section = sectionAround(element);
        if (const std::optional<Tag> meant = meantBy(element.name, section)) {
            silent_.insert(&element);
            in_.error(element.place, "unknown-element",
                      "unknown element " + shown(element.name) + "; did you mean " + shown(kTags[*meant]) +
                          "?" + (knownElement(*meant).oddlySpelled ? " The spelling is meant." : ""));
        } else if (element.parent == &in_.root() || findTag(element.parent->name)) {
            in_.warning(element.place, "unknown-element",
                        "unknown element " + shown(element.name) + ": the module does not read it");
        }
    }

    void checkAttributes() {
        for (const config::Attribute& attribute : in_.document.attributes) {
            const std::string& name = attribute.name;
            // What editors and validators go by.
            if (name.starts_with("xmlns") || name.starts_with("xsi:") || name.starts_with("xml:")) {
                continue;
            }
            in_.warning(attribute.element->place, "attribute",
                        "the attribute " + shown(name) + " of " + shown(attribute.element->name) +
                            " has no effect: only element names and texts are read");
        }
    }

    const Inspection& in_;
    std::unordered_set<const Element*> silent_;  ///< within what was reported already
    std::unordered_map<Tag, const Element*> sections_;
};

}  // namespace

void checkStructure(const Inspection& inspection) {
    StructureCheck(inspection).run();
}

}  // namespace check
