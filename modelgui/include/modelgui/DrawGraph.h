#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace ZML {
class FlowGraphPart;
}
namespace Velmar::Lattix {
class Model;
class Operator;
}  // namespace Velmar::Lattix

namespace quarn::modelgui {

struct drawPass;

// Draws a model onto the flow-graph canvas: the model's own ports as port nodes, its operators
// with their port, branch and flow-control points, the data and flow-control connections and the
// text annotations, each where the model stores it, laying the canvas out when positions are
// missing. Static members only; a drawing pass keeps its state in a record that lives for the
// call.
class DrawGraph {
public:
    DrawGraph() = delete;

    // Empties `canvas` and draws `model` onto it; does nothing when `model` is empty. `canvas` must
    // not be null. `secondModel` is the model that `model` belongs to when a sub-model is drawn (or
    // empty): when it is read-only or locked the canvas is read-only too. `first` marks the first
    // drawing of a freshly opened model: the view is then fitted to the drawing. `showHidden` draws
    // the ports the engine marks hidden (private ports never are); `forceLayout` lays the canvas
    // out even when every element has a stored position. Engine and toolkit errors pass out as
    // QuarnLog::Exception; the canvas then holds what was drawn up to that point.
    static void DrawProcess(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                            const std::shared_ptr<Velmar::Lattix::Model>& model,
                            const std::shared_ptr<Velmar::Lattix::Model>& secondModel, bool first,
                            bool showHidden, bool forceLayout);

    // The fixed colour and node-type tables, keyed by colour category or colour key without regard
    // to case; an unknown key gives the entry of the empty key. Colour words have red in the low
    // byte, then green, then blue.
    static std::uint32_t GetFillColor(const std::wstring& key);
    static std::uint32_t GetOutlineColor(const std::wstring& key);
    static int GetNodeType(const std::wstring& key);

private:
    static void AddOperatorToFlowGraph(drawPass& pass,
                                       const std::shared_ptr<Velmar::Lattix::Operator>& op);
};

}  // namespace quarn::modelgui
