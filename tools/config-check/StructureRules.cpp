#include "Rules.h"

#include <unordered_set>
#include <utility>

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

bool isWithin(const Element* element, const Element* around) {
    while (element != nullptr && element != around) {
        element = element->parent;
    }
    return element != nullptr;
}

/// The element of the same name and section that the module takes in this one's place.
const Element* takenInstead(const Inspection& in, const Element& element) {
    for (const Element* around = element.parent; around != nullptr; around = around->parent) {
        if (!in.looked.contains(around)) {
            continue;
        }
        for (const config::Reading& reading : in.taken.readings) {
            if (reading.element->name == element.name && isWithin(reading.element->parent, around)) {
                return reading.element;
            }
        }
    }
    return nullptr;
}

void checkStray(const Inspection& in, const Element& element, const char* consequence) {
    if (element.stray != 0) {
        in.error(in.afterBlanks(element, element.stray), "stray-text", "text directly in ",
                 shown(element.name), ": it is not read", consequence);
    }
}

void checkRoot(const Inspection& in) {
    const Element& root = in.root();
    if (findTag(root.name)) {
        in.error(
            root.place, "root", shown(root.name),
            " is the root element here, whose name is not read; an element of any other name belongs around it");
    }
    checkStray(in, root, "");
}

void checkNotLookedAt(const Inspection& in, const Element& element, Tag tag) {
    const std::string name = shown(element.name);
    if (element.fromEntity) {
        in.error(element.place, "entity", name,
                 " comes from an entity; it is read only where it is written out");
    } else if (const Element* const instead = takenInstead(in, element)) {
        in.error(element.place, "duplicate", "a second ", name,
                 " in the same section is not read; the first one counts")
            .notes.push_back({instead->place, "the first one"});
    } else {
        in.error(element.place, "misplaced", name, " is not read in ", shown(element.parent->name),
                 "; it is read ", placeOf(tag));
    }
}

/// True when the element was meant to be another one.
bool checkUnknown(const Inspection& in, const Element& element) {
    const std::string name = shown(element.name);
    const std::optional<Tag> meant = meantBy(element.name, sectionAround(element));
    if (meant) {
        in.error(element.place, "unknown-element", "unknown element ", name, "; did you mean ",
                 shown(kTags[*meant]), "?", isOddlySpelled(*meant) ? " The spelling is meant." : "");
    } else if (element.parent == &in.root() || findTag(element.parent->name)) {
        in.warning(element.place, "unknown-element", "unknown element ", name,
                   ": the module does not read it", namesIn(findTag(element.parent->name)));
    }
    return meant.has_value();
}

void checkElements(const Inspection& in) {
    std::unordered_set<const Element*> silent;  // within what was reported already
    std::unordered_map<Tag, const Element*> earlier;
    for (const Element& element : in.document.elements) {
        if (in.findings.full()) {
            return;
        }
        const std::optional<Tag> tag = findTag(element.name);
        if (&element == &in.root()) {
            checkRoot(in);
        } else if (silent.contains(element.parent) || (!tag && checkUnknown(in, element))) {
            silent.insert(&element);
        } else if (in.looked.contains(&element)) {
            if (knownElement(*tag).holdsElements) {
                checkStray(in, element,
                           isSection(*tag) ? "" : "; each text stands in a 'Message' of its own");
            }
            if (element.parent == &in.root()) {
                if (const Element* const first = std::exchange(earlier[*tag], &element)) {
                    in.warning(element.place, "repeated", "a second ", shown(element.name),
                               ": where both give a setting, this one wins")
                        .notes.push_back({first->place, "the first one"});
                }
            }
        } else if (tag) {
            silent.insert(&element);
            checkNotLookedAt(in, element, *tag);
        }
    }
}

}  // namespace

void checkStructure(const Inspection& in) {
    checkElements(in);
    for (const config::Attribute& attribute : in.document.attributes) {
        const std::string& name = attribute.name;
        // What editors and validators go by.
        if (name.starts_with("xmlns") || name.starts_with("xsi:") || name.starts_with("xml:")) {
            continue;
        }
        in.warning(attribute.element->place, "attribute", "the attribute ", shown(name), " of ",
                   shown(attribute.element->name), " has no effect: only element names and texts are read");
    }
}

}  // namespace check
