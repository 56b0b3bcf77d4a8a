#pragma once

#include <string_view>

namespace KRX::Services::ZephanServicesNS {

constexpr char kConnect[] = "connect";
constexpr char kDisconnect[] = "disconnect";

/// The operations of the service.
enum class Operation { Unknown, Connect, Disconnect };

/// Names are matched exactly; a null name matches none.
constexpr Operation operationNamed(const char* name) noexcept {
    const std::string_view wanted = name == nullptr ? std::string_view() : name;
    if (wanted == kConnect) {
        return Operation::Connect;
    }
    return wanted == kDisconnect ? Operation::Disconnect : Operation::Unknown;
}

}  // namespace KRX::Services::ZephanServicesNS
