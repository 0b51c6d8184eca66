#pragma once

// The "Previous" and "Next" points of an operator node, worked on the node itself, for drawing:
// it already holds every node it drew and so never searches the canvas for one.

#include <memory>
#include <string>

namespace ZML {
class FlowGraphNodeEx;
}
namespace Velmar::Lattix {
class Operator;
}

namespace quarn::modelgui {

class FlowControlConnectionPoint;

namespace detail {

inline const std::wstring kPreviousCaption = L"Previous";
inline const std::wstring kNextCaption = L"Next";

// The first flow-control point of `node` captioned exactly `caption`, or empty.
std::shared_ptr<FlowControlConnectionPoint> FindFlowPointOnNode(
    const std::shared_ptr<ZML::FlowGraphNodeEx>& node, const std::wstring& caption);

// Gives `node` (not null) the "Previous" and "Next" points of `op` that it lacks, each inserted at
// index 0, so a node that receives both lists "Next" first.
void AddFlowControlPoints(const std::shared_ptr<ZML::FlowGraphNodeEx>& node,
                          const std::shared_ptr<Velmar::Lattix::Operator>& op);

}  // namespace detail
}  // namespace quarn::modelgui
