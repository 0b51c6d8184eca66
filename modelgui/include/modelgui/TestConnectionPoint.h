#pragma once

#include <memory>

#include "modelgui/SolutionBuilderConnectionPoint.h"

namespace quarn::modelgui {

// The condition input of a loop or if operator: an input captioned "Test", fed by a boolean data
// port.
class TestConnectionPoint : public SolutionBuilderConnectionPoint {
public:
    TestConnectionPoint();
    ~TestConnectionPoint() override;

    // Accepts a PortDescriptionConnectionPoint whose port supports "TAMARIN.Bool"; refuses every
    // other point, and a port description point without a port.
    bool CanConnect(const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& other) override;
};

}  // namespace quarn::modelgui
