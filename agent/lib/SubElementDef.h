// How an element declared one of its sub-elements.
#pragma once

#include <optional>
#include <string>

namespace KRX::Messaging {

class Serializable;

class SubElementDef final {
  public:
    std::string name;
    /// Whether the content is `element`, which is null when there is none; otherwise a simple text.
    bool isObject = false;
    Serializable* element = nullptr;  ///< not owned
    int maximum = 1;  ///< how often it may stand in the element; 0 or less: any number of times
    std::optional<std::string> text;  ///< of a simple sub-element whose owner keeps no text of its own
};

}  // namespace KRX::Messaging
