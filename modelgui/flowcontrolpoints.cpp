#include "flowcontrolpoints.h"

#include "ZML/FlowGraphNodeEx.h"
#include "modelgui/FlowControlConnectionPoint.h"

namespace quarn::modelgui::detail {

std::shared_ptr<FlowControlConnectionPoint> FindFlowPointOnNode(
    const std::shared_ptr<ZML::FlowGraphNodeEx>& node, const std::wstring& caption) {
    if (!node) {
        return nullptr;
    }
    for (const auto& point : node->GetFlowConnectionPoints()) {
        auto flow = std::dynamic_pointer_cast<FlowControlConnectionPoint>(point);
        if (flow && flow->GetCaption() == caption) {
            return flow;
        }
    }
    return nullptr;
}

void AddFlowControlPoints(const std::shared_ptr<ZML::FlowGraphNodeEx>& node,
                          const std::shared_ptr<Velmar::Lattix::Operator>& op) {
    if (!FindFlowPointOnNode(node, kPreviousCaption)) {
        auto previous = std::make_shared<FlowControlConnectionPoint>();
        previous->SetOperator(op);
        node->AddConnectionPointAt(0, previous);
        previous->SetCaption(kPreviousCaption);
        previous->SetTooltip(kPreviousCaption);
        previous->SetInput();
        // Control enters an operator along one path only.
        previous->SetMaxConnections(1);
    }
    if (!FindFlowPointOnNode(node, kNextCaption)) {
        auto next = std::make_shared<FlowControlConnectionPoint>();
        next->SetOperator(op);
        node->AddConnectionPointAt(0, next);
        next->SetCaption(kNextCaption);
        next->SetTooltip(kNextCaption);
        next->SetOutput();
    }
}

}  // namespace quarn::modelgui::detail
