#pragma once

#include <memory>

namespace ZML {

class FlowGraphNodeEx;
class FlowGraphConnectionPointEx;

// What lies under a canvas position: the topmost node there and, when the position is on one of
// its connection points, that point. Both are null over empty canvas. Mouse events fired by the
// canvas carry it in Event::detail.
struct FlowGraphHit {
    std::shared_ptr<FlowGraphNodeEx> node;
    std::shared_ptr<FlowGraphConnectionPointEx> point;
};

}  // namespace ZML
