#pragma once

namespace ZML {

// The answer of FlowGraphPart::CheckConnect: whether a connection gesture between two points
// would be accepted, and if not, why. Views use it for live feedback while a connection is
// dragged.
enum class FlowGraphConnectCheck {
    Accepted,
    ReadOnly,          // the canvas is read-only
    MissingPoint,      // a point is null or not on a node of this canvas
    SameNode,          // both points belong to the same node
    SameDirection,     // two inputs or two outputs
    Refused,           // the receiving (input) point's CanConnect said no
    MaximumReached,    // one of the points already has its maximum number of connections
    AlreadyConnected,  // the two points are already joined
};

// A short English description of `check`, for logs and tool tips.
const char* FlowGraphConnectCheckText(FlowGraphConnectCheck check);

}  // namespace ZML
