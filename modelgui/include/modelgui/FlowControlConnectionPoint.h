#pragma once

#include <memory>

#include "modelgui/SolutionBuilderConnectionPoint.h"

namespace Velmar::Lattix {
class Operator;
}

namespace quarn::modelgui {

struct FlowControlPointData;

// The "Previous" (input) or "Next" (output) flow-control point of an operator. It holds, weakly,
// the operator whose node carries it. Caption and direction are set by whoever creates the point.
class FlowControlConnectionPoint : public SolutionBuilderConnectionPoint {
public:
    FlowControlConnectionPoint();
    ~FlowControlConnectionPoint() override;

    // Accepts a FlowControlConnectionPoint, a TrueFalseConnectionPoint or a BodyConnectionPoint:
    // control may come from another operator's "Next", an if operator's branch or a loop's body.
    bool CanConnect(const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& other) override;

    // Remembers `op` weakly.
    void SetOperator(const std::shared_ptr<Velmar::Lattix::Operator>& op);
    // The operator, or empty when it is gone or was never set.
    std::shared_ptr<Velmar::Lattix::Operator> GetOperator() const;

private:
    std::shared_ptr<FlowControlPointData> flowControlPointData;
};

}  // namespace quarn::modelgui
