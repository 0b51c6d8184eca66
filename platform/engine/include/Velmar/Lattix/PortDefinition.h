#pragma once

#include <string>
#include <vector>

#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/PortDirection.h"

namespace Velmar::Lattix {

// How an operator type declares one of its ports (a plain value).
struct PortDefinition {
    std::wstring name;
    PortDirection direction = PortDirection::Input;
    std::vector<ObjectName> types;
    std::wstring description;
    bool optional = false;
    bool hidden = false;
    bool isPrivate = false;
    // The default value as text, read with the first type; empty for none.
    std::wstring defaultValue;
    std::vector<std::wstring> keywords;
};

}  // namespace Velmar::Lattix
