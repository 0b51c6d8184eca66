#pragma once

#include <string>
#include <vector>

namespace ZML {

// One entry of a context menu. A separator has an empty name and title.
struct MenuItem {
    std::string name;
    std::wstring title;
    bool separator = false;
};

// A context menu as a dialog script declares it. Choosing an item delivers the event "menu" to
// the part the menu was opened on, with the item's name as the event text.
struct Menu {
    std::string name;
    std::vector<MenuItem> items;
};

}  // namespace ZML
