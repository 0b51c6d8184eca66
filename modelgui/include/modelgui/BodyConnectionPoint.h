#pragma once

#include "modelgui/SolutionBuilderConnectionPoint.h"

namespace quarn::modelgui {

// The loop-body output of a loop operator: an output captioned "Body". It keeps the toolkit's
// connection rule.
class BodyConnectionPoint : public SolutionBuilderConnectionPoint {
public:
    BodyConnectionPoint();
    ~BodyConnectionPoint() override;
};

}  // namespace quarn::modelgui
