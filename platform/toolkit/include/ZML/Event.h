#pragma once

#include <any>
#include <functional>
#include <memory>
#include <string>

#include "ZML/PartTypes.h"

namespace ZML {

class Part;

// One event delivered to a part's handlers. Names are lower-case ("mousedown", "mouseup",
// "doubleclick", "valuechanged", "input", "charinput", "keydown", "close", "display", "menu",
// "expand", "collapse", "dragstart") plus "SelectionChanged". Fields that an event does not use
// keep their defaults.
struct Event {
    std::string name;
    // The part the event happened on; set by Part::Fire when left empty.
    std::shared_ptr<Part> source;
    // Mouse position in the source part's coordinates.
    int x = 0;
    int y = 0;
    MouseButton button = MouseButton::None;
    unsigned modifiers = ModNone;
    // Key code of "keydown", or the character of "charinput".
    int key = 0;
    // Typed text ("input", "charinput"), chosen menu item name ("menu"), or other text.
    std::wstring text;
    // Anything else the event carries, for example the tree node of a "doubleclick" on a tree.
    std::any detail;
};

using EventHandler = std::function<void(const Event&)>;

// Identifies one handler bound with Part::OnMessage, for Part::RemoveMessage.
using HandlerId = unsigned long long;

}  // namespace ZML
