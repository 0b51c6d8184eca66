#pragma once

#include "ZML/FlowGraphNodeEx.h"

namespace quarn::modelgui {

// The common base of every node the editor puts on the flow-graph canvas. It adds nothing to the
// toolkit node; other code recognises the editor's own nodes by this class. Always made with
// std::make_shared and held by std::shared_ptr (the canvas keeps the pointers it is given).
class SolutionBuilderNode : public ZML::FlowGraphNodeEx {
public:
    SolutionBuilderNode();
    ~SolutionBuilderNode() override;
};

}  // namespace quarn::modelgui
