#pragma once

#include <memory>

#include "modelgui/SolutionBuilderConnectionPoint.h"

namespace Velmar::Lattix {
class Port;
}

namespace quarn::modelgui {

struct PortDescriptionPointData;

// The point of one operator port, or the single point of a PortNode; data connections run between
// two such points. Unlike every other canvas element it holds its port strongly, so that a port
// taken off its operator during an edit can still be read here while the connections leading to it
// are taken down. The direction is set by whoever draws the point.
class PortDescriptionConnectionPoint : public SolutionBuilderConnectionPoint {
public:
    PortDescriptionConnectionPoint();
    ~PortDescriptionConnectionPoint() override;

    // Does nothing: the point shows what the drawer gave it, without the toolkit's default tool
    // tip.
    void PreDraw() override;
    // Accepts exactly another PortDescriptionConnectionPoint. Data types are not compared here; the
    // engine reports type problems when the connection is made.
    bool CanConnect(const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& other) override;

    // Holds `port` strongly, releasing any port held before.
    void SetThePort(const std::shared_ptr<Velmar::Lattix::Port>& port);
    // The held port (a copy of the pointer), empty when none was set.
    std::shared_ptr<Velmar::Lattix::Port> GetPort() const;

private:
    std::shared_ptr<PortDescriptionPointData> portDescriptionPointData;
};

}  // namespace quarn::modelgui
