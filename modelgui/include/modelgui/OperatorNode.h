#pragma once

#include <memory>

#include "modelgui/SolutionBuilderNode.h"

namespace Velmar::Lattix {
class Operator;
}

namespace quarn::modelgui {

struct OperatorNodeData;

// The canvas node of one operator of the model being edited. The node holds its operator weakly:
// when the model drops the operator, the node does not keep it alive and GetOperator answers an
// empty pointer, which every caller must test for.
class OperatorNode : public SolutionBuilderNode {
public:
    OperatorNode();
    ~OperatorNode() override;

    // Remembers `op` weakly (an empty pointer clears the reference).
    void SetOperator(const std::shared_ptr<Velmar::Lattix::Operator>& op);
    // The operator, or empty when it is gone or was never set.
    std::shared_ptr<Velmar::Lattix::Operator> GetOperator() const;

private:
    std::shared_ptr<OperatorNodeData> operatorNodeData;
};

}  // namespace quarn::modelgui
