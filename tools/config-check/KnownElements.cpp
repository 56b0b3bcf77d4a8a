#include "Rules.h"
#include "common/Difference.h"

#include <algorithm>
#include <utility>

namespace check {
namespace {

using tools::difference;
using tools::lowered;

constexpr std::size_t kLongestName = 40;  // beyond, a name is not a slip of one of ours
constexpr std::size_t kShortestPart = 5;

std::vector<KnownElement> tabled() {
    std::vector<KnownElement> known;
    const auto add = [&](Tag tag, bool holdsElements, std::optional<Tag> parent) {
        auto found =
            std::find_if(known.begin(), known.end(), [&](const KnownElement& one) { return one.tag == tag; });
        if (found == known.end()) {
            found = known.insert(found, {tag, holdsElements, {}});
        }
        std::vector<Tag>& parents = found->parents;
        if (parent && std::find(parents.begin(), parents.end(), *parent) == parents.end()) {
            parents.push_back(*parent);
        }
    };
    for (const config::SettingRow& row : config::settingRows()) {
        const bool isList = row.kind == config::Kind::messages;
        if (row.section) {
            add(*row.section, true, std::nullopt);
        }
        add(row.tag, isList, row.section);
        if (isList) {
            add(TagNames::Message, false, row.tag);
        }
    }
    return known;
}

bool isReadIn(const KnownElement& element, std::optional<Tag> section) {
    const std::vector<Tag>& parents = element.parents;
    return section ? std::find(parents.begin(), parents.end(), *section) != parents.end() : parents.empty();
}

std::string listed(const std::vector<Tag>& tags, const char* between) {
    std::string list;
    for (const Tag tag : tags) {
        list += joined(list.empty() ? "" : between, "'", kTags[tag], "'");
    }
    return list;
}

}  // namespace

const std::vector<KnownElement>& knownElements() {
    static const std::vector<KnownElement> known = tabled();
    return known;
}

const KnownElement& knownElement(Tag tag) {
    return *std::find_if(knownElements().begin(), knownElements().end(),
                         [&](const KnownElement& one) { return one.tag == tag; });
}

std::optional<Tag> findTag(std::string_view name) {
    const auto found = std::find_if(knownElements().begin(), knownElements().end(),
                                    [&](const KnownElement& one) { return kTags[one.tag] == name; });
    return found == knownElements().end() ? std::nullopt : std::optional(found->tag);
}

bool isSection(Tag tag) {
    return knownElement(tag).holdsElements && knownElement(tag).parents.empty();
}

bool isOddlySpelled(Tag tag) {
    return tag == TagNames::TunnelMessags || kTags[tag].find("Listner") != std::string_view::npos;
}

std::optional<Tag> meantBy(const std::string& name, std::optional<Tag> section) {
    const std::string plain = name.substr(name.rfind(':') + 1);
    if (plain.size() > kLongestName) {
        return std::nullopt;
    }
    std::optional<Tag> best;
    // A third of the letters may differ: "LogPath" is not a slip of "LogLevel".
    std::size_t least = std::max<std::size_t>(plain.size() / 3, 1) + 1;
    for (const KnownElement& one : knownElements()) {
        if (const std::size_t found = difference(plain, kTags[one.tag]); found < least) {
            least = found;
            best = one.tag;
        }
    }
    if (best || plain.size() < kShortestPart) {
        return best;
    }
    // "MaxFileSize", "LogFile": a part of a name that would be read here.
    const std::string part = lowered(plain);
    for (const KnownElement& one : knownElements()) {
        const std::string whole = lowered(kTags[one.tag]);
        if (isReadIn(one, section) &&
            (whole.find(part) != std::string::npos || part.find(whole) != std::string::npos)) {
            return one.tag;
        }
    }
    return std::nullopt;
}

std::string placeOf(Tag tag) {
    const std::vector<Tag>& parents = knownElement(tag).parents;
    return parents.empty()
               ? "directly in the root element"
               : joined(tag == TagNames::Message ? "directly in " : "in ", listed(parents, " or "));
}

std::string namesIn(std::optional<Tag> section) {
    std::vector<Tag> tags;
    for (const KnownElement& one : knownElements()) {
        if (section && isReadIn(one, section)) {
            tags.push_back(one.tag);
        }
    }
    return tags.empty() ? "" : joined("; what it reads in '", kTags[*section], "' is ", listed(tags, ", "));
}

}  // namespace check
