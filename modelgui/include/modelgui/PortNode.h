#pragma once

#include <memory>

#include "modelgui/SolutionBuilderNode.h"

namespace Velmar::Lattix {
class Port;
}

namespace quarn::modelgui {

struct PortNodeData;

// The canvas node of one of the model's own outer ports, drawn as a node of its own with a single
// PortDescriptionConnectionPoint. The node holds its port weakly; GetPort answers an empty pointer
// once the model has dropped the port.
class PortNode : public SolutionBuilderNode {
public:
    PortNode();
    ~PortNode() override;

    // Remembers `port` weakly.
    void SetThePort(const std::shared_ptr<Velmar::Lattix::Port>& port);
    // The port, or empty when it is gone or was never set.
    std::shared_ptr<Velmar::Lattix::Port> GetPort() const;

private:
    std::shared_ptr<PortNodeData> portNodeData;
};

}  // namespace quarn::modelgui
