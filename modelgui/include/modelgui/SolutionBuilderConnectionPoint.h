#pragma once

#include "ZML/FlowGraphConnectionPointEx.h"

namespace quarn::modelgui {

// The common base of every connection point the editor puts on the canvas. It keeps the toolkit's
// PreDraw and CanConnect; other code recognises the editor's own points by this class. Always made
// with std::make_shared and held by std::shared_ptr.
class SolutionBuilderConnectionPoint : public ZML::FlowGraphConnectionPointEx {
public:
    SolutionBuilderConnectionPoint();
    ~SolutionBuilderConnectionPoint() override;
};

}  // namespace quarn::modelgui
