#pragma once

#include <string>
#include <utility>
#include <vector>

#include "ZML/FlowGraphLocation.h"

namespace ZML {

// A directed graph to be laid out: node sizes in canvas units and edges as pairs of node indices
// (from, to). `rankDirection` is the Graphviz rankdir: "LR", "TB", "RL" or "BT".
struct LayeredLayoutInput {
    struct Size {
        int width = 0;
        int height = 0;
    };
    std::vector<Size> nodes;
    std::vector<std::pair<std::size_t, std::size_t>> edges;
    std::string rankDirection = "LR";
};

// The top-left corner of every node, in input order, in a layered drawing made by Graphviz "dot";
// the drawing's top-left corner is at (margin, margin). Throws QuarnLog::Exception when Graphviz
// fails. Serialised process-wide: Graphviz keeps global state.
std::vector<FlowGraphLocation> ComputeLayeredLayout(const LayeredLayoutInput& input, int margin);

// The same graph in the dot language, exactly as ComputeLayeredLayout hands it to Graphviz.
std::string LayeredLayoutDot(const LayeredLayoutInput& input);

}  // namespace ZML
