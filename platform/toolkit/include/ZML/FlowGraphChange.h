#pragma once

#include <memory>

namespace ZML {

class FlowGraphNodeEx;
class FlowGraphConnectionEx;
class FlowGraphConnectionPointEx;

// One change of a canvas, as reported to FlowGraphPart::OnChange observers (a view keeps its scene
// in step with these without rebuilding it). Reported after the change is complete.
struct FlowGraphChange {
    enum class Kind {
        NodeAdded,           // node
        NodeRemoved,         // node (its connections were removed and reported first)
        NodeChanged,         // node, aspects, and point when a connection point caused it
        ConnectionAdded,     // connection
        ConnectionRemoved,   // connection
        ConnectionChanged,   // connection (colour or user data)
        Cleared,             // every node and connection went at once (RemoveAllNodes)
        SelectionChanged,    // the set of selected nodes changed
        DisplayInfoChanged,  // scale or scroll position
        OptionsChanged,      // read-only flag, tool tip delay, port names or port data shown
    };
    // What changed on a node (NodeChanged), combined as bits.
    enum Aspect : unsigned {
        Appearance = 1,  // caption, tool tip, icon, colours, fonts, node type
        Geometry = 2,    // location, orientation or size
        Points = 4,      // connection points added, removed or changed
        State = 8,       // state or progress
    };

    Kind kind = Kind::NodeChanged;
    std::shared_ptr<FlowGraphNodeEx> node;
    std::shared_ptr<FlowGraphConnectionEx> connection;
    std::shared_ptr<FlowGraphConnectionPointEx> point;
    unsigned aspects = 0;
};

}  // namespace ZML
