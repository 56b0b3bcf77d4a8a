#include "CommandCall.h"

#include "Module.h"

namespace sim {

CommandAnswer runCommand(const Module& module, const char* command,
                         std::optional<std::vector<Assignment>> properties) {
    std::vector<Prop> records;
    if (properties) {
        for (auto& [name, value] : *properties) {
            records.push_back({name.data(), nullptr, nullptr, value ? value->data() : nullptr});
        }
    }
    const PropList list = {records.data(), static_cast<std::int32_t>(records.size())};
    PropList* response = nullptr;
    CommandAnswer answer;
    answer.result =
        module.dataSourceExecute(nullptr, nullptr, command, properties ? &list : nullptr, &response);
    if (response != nullptr) {
        answer.properties.emplace();
        for (std::int32_t i = 0; i < response->count; ++i) {
            const auto& [name, field2, field3, value] = response->properties[i];
            answer.properties->emplace_back(
                name == nullptr ? "" : name,
                value == nullptr ? std::nullopt : std::optional<std::string>(value));
        }
        module.dataSourceDestroyPropList(nullptr, nullptr, response);
    }
    return answer;
}

}  // namespace sim
