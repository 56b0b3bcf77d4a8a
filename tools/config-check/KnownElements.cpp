#include "KnownElements.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace check {
namespace {

constexpr std::size_t kLongestName = 40;  // beyond, a name is no slip of one of ours
constexpr std::size_t kShortestPart = 5;

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace

const std::vector<KnownElement>& KnownElements::all() {
    using enum KnownElement::Holds;
    static const std::vector<KnownElement> known{
        {TagNames::FileLogging, elements, {}},
        {TagNames::LogFilePath, text, {TagNames::FileLogging}},
        {TagNames::FileSize, text, {TagNames::FileLogging}},
        {TagNames::LogRevisionDays, text, {TagNames::FileLogging}},
        {TagNames::LogLevel, text, {TagNames::FileLogging}},
        {TagNames::FileLogger, flag, {TagNames::FileLogging}},
        {TagNames::TunnelMessags, elements, {}, false, true},
        {TagNames::FileMessages, elements, {}},
        {TagNames::OpenMessage, elements, {TagNames::TunnelMessags, TagNames::FileMessages}},
        {TagNames::CloseMessage, elements, {TagNames::TunnelMessags, TagNames::FileMessages}},
        {TagNames::Message, text, {TagNames::OpenMessage, TagNames::CloseMessage}, true},
        {TagNames::AbortMessage, text, {TagNames::TunnelMessags}},
        {TagNames::ListnerSet, elements, {}, false, true},
        {TagNames::RDListner, flag, {TagNames::ListnerSet}, false, true},
        {TagNames::TunnelListner, flag, {TagNames::ListnerSet}, false, true},
        {TagNames::FileListner, flag, {TagNames::ListnerSet}, false, true},
        {TagNames::Script, text, {}},
        {TagNames::RSMResumeStatusFile, text, {}},
    };
    return known;
}

const KnownElement& KnownElements::of(Tag tag) {
    return *std::find_if(all().begin(), all().end(), [&](const KnownElement& one) { return one.tag == tag; });
}

std::optional<Tag> KnownElements::find(const std::string& name) const {
    const auto found = std::find(names_.begin(), names_.end(), name);
    return found == names_.end() ? std::nullopt : std::optional(static_cast<Tag>(found - names_.begin()));
}

std::optional<Tag> KnownElements::meantBy(const std::string& name, std::optional<Tag> section) const {
    const std::string plain = name.substr(name.rfind(':') + 1);
    if (plain.size() > kLongestName) {
        return std::nullopt;
    }
    std::optional<Tag> best;
    // A third of the letters may differ: "LogPath" is no slip of "LogLevel".
    std::size_t least = std::max<std::size_t>(plain.size() / 3, 1) + 1;
    for (const KnownElement& one : all()) {
        if (const std::size_t found = difference(plain, names_[one.tag]); found < least) {
            least = found;
            best = one.tag;
        }
    }
    if (best || plain.size() < kShortestPart) {
        return best;
    }
    // "MaxFileSize", "LogFile": a part of a name that would be read here.
    const std::string part = lowered(plain);
    for (const KnownElement& one : all()) {
        const bool here =
            section ? std::find(one.parents.begin(), one.parents.end(), *section) != one.parents.end()
                    : one.parents.empty();
        const std::string whole = lowered(names_[one.tag]);
        if (here && (whole.find(part) != std::string::npos || part.find(whole) != std::string::npos)) {
            return one.tag;
        }
    }
    return std::nullopt;
}

std::string KnownElements::placeOf(Tag tag) const {
    const KnownElement& element = of(tag);
    if (element.parents.empty()) {
        return "directly in the root element";
    }
    std::string place = element.direct ? "directly in " : "in ";
    for (const Tag parent : element.parents) {
        place += (parent == element.parents.front() ? "'" : " or '") + names_[parent] + "'";
    }
    return place;
}

std::size_t difference(const std::string& one, const std::string& other) {
    const std::string a = lowered(one);
    const std::string b = lowered(other);
    std::vector<std::size_t> before;
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        before = std::exchange(last, row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0U : 1U)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[j] = std::min(row[j], before[j - 2] + 1);
            }
        }
    }
    return row.back();
}

}  // namespace check
