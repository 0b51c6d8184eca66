#include "canvas/flowgraphlayout.h"

#include <graphviz/cgraph.h>
#include <graphviz/gvc.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>

#include "QuarnLog/Exception.h"

namespace ZML {

namespace {

// Graphviz keeps global state (the cgraph dictionaries, the layout engines' statics), so every
// use of it goes through this one lock.
std::mutex& GraphvizMutex() {
    static std::mutex mutex;
    return mutex;
}

// One context for the process: making one loads the plug-in configuration, which costs more than
// a small layout. It is never freed: this Graphviz frees its context without the configuration
// text that the plug-in table points into, so a freed context leaves a leak behind, while a kept
// one stays reachable. Call with the lock held.
GVC_t* GraphvizContext() {
    static GVC_t* context = nullptr;
    if (!context) {
        context = gvContext();
        if (!context) {
            QUARN_THROW("gvContext failed: Graphviz could not be initialised.");
        }
    }
    return context;
}

// The edges to give dot: self-loops dropped (they do not move nodes) and the back edges of a
// depth-first walk in node order reversed, which is how dot breaks cycles itself; handing it an
// acyclic graph spares its cycle breaker, whose reversed edges this Graphviz never frees.
std::vector<std::pair<std::size_t, std::size_t>> AcyclicEdges(const LayeredLayoutInput& input) {
    const std::size_t count = input.nodes.size();
    std::vector<std::vector<std::size_t>> outgoing(count);
    for (std::size_t e = 0; e < input.edges.size(); ++e) {
        outgoing.at(input.edges[e].first).push_back(e);
    }
    enum class Mark : unsigned char { New, Open, Done };
    std::vector<Mark> marks(count, Mark::New);
    std::vector<bool> reversed(input.edges.size(), false);
    std::vector<std::pair<std::size_t, std::size_t>> stack;  // node, next outgoing edge
    for (std::size_t root = 0; root < count; ++root) {
        if (marks[root] != Mark::New) {
            continue;
        }
        marks[root] = Mark::Open;
        stack.emplace_back(root, 0);
        while (!stack.empty()) {
            auto& [node, next] = stack.back();
            if (next == outgoing[node].size()) {
                marks[node] = Mark::Done;
                stack.pop_back();
                continue;
            }
            const std::size_t edge = outgoing[node][next++];
            const std::size_t to = input.edges[edge].second;
            if (marks.at(to) == Mark::Open) {
                reversed[edge] = true;
            } else if (marks[to] == Mark::New) {
                marks[to] = Mark::Open;
                stack.emplace_back(to, 0);
            }
        }
    }
    std::vector<std::pair<std::size_t, std::size_t>> edges;
    edges.reserve(input.edges.size());
    for (std::size_t e = 0; e < input.edges.size(); ++e) {
        const auto [from, to] = input.edges[e];
        if (from != to) {
            edges.emplace_back(reversed[e] ? to : from, reversed[e] ? from : to);
        }
    }
    return edges;
}

struct GraphCloser {
    void operator()(Agraph_t* graph) const { agclose(graph); }
};
using GraphPtr = std::unique_ptr<Agraph_t, GraphCloser>;

// Graphviz sizes are in inches of 72 points; a canvas unit counts as one point.
constexpr double kPointsPerInch = 72.0;

std::string Inches(int units) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4f", units / kPointsPerInch);
    return text;
}

char* Text(const char* text) {
    return const_cast<char*>(text);
}

// Builds the cgraph graph of `input`; `nodes` receives the node handles in input order. Call with
// the lock held.
GraphPtr BuildGraph(const LayeredLayoutInput& input, std::vector<Agnode_t*>& nodes) {
    GraphPtr graph(agopen(Text("canvas"), Agdirected, nullptr));
    if (!graph) {
        QUARN_THROW("agopen failed: the layout graph could not be made.");
    }
    Agraph_t* g = graph.get();
    agattr(g, AGRAPH, Text("rankdir"), Text(input.rankDirection.c_str()));
    agattr(g, AGRAPH, Text("nodesep"), Text("0.35"));
    agattr(g, AGRAPH, Text("ranksep"), Text("0.6"));
    // Only node positions are read back: no edge routing.
    agattr(g, AGRAPH, Text("splines"), Text(""));
    agattr(g, AGNODE, Text("shape"), Text("box"));
    agattr(g, AGNODE, Text("fixedsize"), Text("true"));
    agattr(g, AGNODE, Text("label"), Text(""));
    Agsym_t* width = agattr(g, AGNODE, Text("width"), Text("1"));
    Agsym_t* height = agattr(g, AGNODE, Text("height"), Text("0.5"));

    nodes.clear();
    nodes.reserve(input.nodes.size());
    for (std::size_t i = 0; i < input.nodes.size(); ++i) {
        // Appended, not `"n" + ...`: GCC 12 misreports a memcpy overlap in that form.
        std::string name = "n";
        name += std::to_string(i);
        Agnode_t* node = agnode(g, Text(name.c_str()), 1);
        agxset(node, width, Text(Inches(std::max(1, input.nodes[i].width)).c_str()));
        agxset(node, height, Text(Inches(std::max(1, input.nodes[i].height)).c_str()));
        nodes.push_back(node);
    }
    for (const auto& [from, to] : input.edges) {
        if (from >= nodes.size() || to >= nodes.size()) {
            QUARN_THROW("Layout edge " + std::to_string(from) + " -> " + std::to_string(to) +
                        " names a node past the last one (" + std::to_string(nodes.size()) +
                        " nodes).");
        }
    }
    for (const auto& [from, to] : AcyclicEdges(input)) {
        agedge(g, nodes[from], nodes[to], nullptr, 1);
    }
    return graph;
}

}  // namespace

std::vector<FlowGraphLocation> ComputeLayeredLayout(const LayeredLayoutInput& input, int margin) {
    std::vector<FlowGraphLocation> locations;
    if (input.nodes.empty()) {
        return locations;
    }
    std::lock_guard lock(GraphvizMutex());
    GVC_t* context = GraphvizContext();
    std::vector<Agnode_t*> nodes;
    GraphPtr graph = BuildGraph(input, nodes);
    if (gvLayout(context, graph.get(), "dot") != 0) {
        QUARN_THROW("gvLayout with the \"dot\" engine failed for a graph of " +
                    std::to_string(input.nodes.size()) + " nodes and " +
                    std::to_string(input.edges.size()) + " edges.");
    }
    // Graphviz puts y upwards; the canvas downwards.
    const boxf box = GD_bb(graph.get());
    locations.reserve(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const pointf centre = ND_coord(nodes[i]);
        const double left = centre.x - box.LL.x - input.nodes[i].width / 2.0;
        const double top = box.UR.y - centre.y - input.nodes[i].height / 2.0;
        locations.push_back({margin + static_cast<int>(std::lround(left)),
                             margin + static_cast<int>(std::lround(top))});
    }
    gvFreeLayout(context, graph.get());
    return locations;
}

std::string LayeredLayoutDot(const LayeredLayoutInput& input) {
    std::lock_guard lock(GraphvizMutex());
    std::vector<Agnode_t*> nodes;
    GraphPtr graph = BuildGraph(input, nodes);
    char* buffer = nullptr;
    std::size_t size = 0;
    FILE* stream = open_memstream(&buffer, &size);
    if (!stream) {
        QUARN_THROW("open_memstream failed: the layout graph could not be written.");
    }
    const int written = agwrite(graph.get(), stream);
    std::fclose(stream);
    std::string text(buffer ? buffer : "", size);
    std::free(buffer);
    if (written != 0) {
        QUARN_THROW("agwrite failed: the layout graph could not be written.");
    }
    return text;
}

}  // namespace ZML
