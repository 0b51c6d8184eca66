#pragma once

#include <string>
#include <vector>

#include "Velmar/Lattix/OperatorDefinition.h"

// The built-in operator catalogue (not installed).
namespace Velmar::Lattix::detail {

std::vector<OperatorDefinition> BuiltInOperators();
// The built-in categories in palette order.
const std::vector<std::wstring>& BuiltInCategoryOrder();

}  // namespace Velmar::Lattix::detail
