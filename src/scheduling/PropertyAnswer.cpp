#include "scheduling/PropertyAnswer.h"

#include "ZephanRSMLogger.h"

#include <memory>
#include <new>
#include <string_view>

namespace {

char* newText(std::string_view text) {
    auto* const copy = new char[text.size() + 1];
    copy[text.copy(copy, text.size())] = '\0';
    return copy;
}

PropList* build(std::span<const AnswerEntry> entries) {
    const auto release = [](PropList* list) { releaseProperties(list); };
    std::unique_ptr<PropList, decltype(release)> list(new PropList{nullptr, 0}, release);
    list->properties = new Prop[entries.size()]{};
    list->count = static_cast<std::int32_t>(entries.size());
    Prop* record = list->properties;
    for (const AnswerEntry& entry : entries) {
        record->name = newText(entry.name);
        record->value = newText(entry.value);
        ++record;
    }
    return list.release();
}

}  // namespace

void giveAnswer(PropList** response, std::span<const AnswerEntry> entries) noexcept {
    if (response == nullptr) {
        return;
    }
    try {
        *response = build(entries);
    } catch (const std::bad_alloc&) {
        *response = nullptr;
    }
}

void releaseProperties(PropList* list) noexcept {
    if (list->properties != nullptr && list->count > 0) {
        for (Prop& record : std::span(list->properties, static_cast<std::size_t>(list->count))) {
            delete[] record.name;
            delete[] record.field2;
            delete[] record.field3;
            delete[] record.value;
            record = {};
        }
    }
    delete[] list->properties;
    *list = {};
    delete list;
}
