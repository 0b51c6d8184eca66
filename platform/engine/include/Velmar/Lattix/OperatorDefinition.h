#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/PortDefinition.h"

namespace Velmar::Lattix {

class Operator;

// An operator type as the factory knows it (a plain value): identity, what the palette shows, how
// it is used in expressions, its ports, and how an instance is made.
struct OperatorDefinition {
    ObjectName name;
    std::wstring displayName;
    std::wstring description;
    std::wstring displayCategory;
    // "Default", "Input_Output", "SubModel", "Deprecated" (the canvas colours by it).
    std::wstring colorCategory = L"Default";
    std::wstring icon;
    std::vector<std::wstring> keywords;
    bool usableInExpression = false;
    // How the operator is written in an expression, most common form first
    // ("FocalMean(<Raster>, <Size>)").
    std::vector<std::wstring> syntaxForms;
    std::vector<PortDefinition> ports;
    // Makes the bare instance; null makes a plain Operator.
    std::function<std::shared_ptr<Operator>()> make;
};

}  // namespace Velmar::Lattix
