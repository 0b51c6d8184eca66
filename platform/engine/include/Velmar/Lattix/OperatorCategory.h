#pragma once

#include <memory>
#include <string>
#include <vector>

#include "quarn/plugin/PluginTypeInfo.h"

namespace Velmar::Lattix {

// One node of the factory's category tree (a plain value): its name, the type information of its
// operators (ordered by display name) and its sub-categories.
struct OperatorCategory {
    std::wstring name;
    std::vector<std::shared_ptr<quarn::plugin::PluginTypeInfo>> operators;
    std::vector<OperatorCategory> subCategories;
};

}  // namespace Velmar::Lattix
