#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Data.h"
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
    // Data attributes: data type full name -> attribute name -> value (copied onto the port).
    std::map<std::wstring, std::map<std::wstring, std::shared_ptr<Data>>> dataAttributes;
};

}  // namespace Velmar::Lattix
