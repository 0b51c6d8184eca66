#pragma once

#include <memory>

namespace ZML {
class FlowGraphPart;
}
namespace Velmar::Lattix {
class Operator;
class Port;
}  // namespace Velmar::Lattix

namespace quarn::modelgui {

class OperatorNode;
class PortNode;
class PortDescriptionConnectionPoint;
class FlowControlConnectionPoint;
class TestConnectionPoint;
class BodyConnectionPoint;
class TrueFalseConnectionPoint;

// Finds the canvas element that stands for an engine object, and gives operator nodes their
// flow-control points. Every lookup answers the first match in canvas order (nodes in the order
// they were added, then the node's points in order) and an empty pointer when nothing matches; a
// node whose engine object has gone never matches, and neither does an empty argument.
//
// Lookups are indexed per canvas (an engine object -> node table kept in step with the canvas's
// change reports), so a drawing pass that looks up every connection stays linear. Canvas and
// lookups belong to the user-interface thread.
class GUIUtils {
public:
    GUIUtils() = delete;

    static std::shared_ptr<OperatorNode> FindOperatorNode(
        const std::shared_ptr<ZML::FlowGraphPart>& canvas,
        const std::shared_ptr<Velmar::Lattix::Operator>& op);
    static std::shared_ptr<PortNode> FindPortNode(
        const std::shared_ptr<ZML::FlowGraphPart>& canvas,
        const std::shared_ptr<Velmar::Lattix::Port>& port);
    // The point of `port` on the node of `op`.
    static std::shared_ptr<PortDescriptionConnectionPoint> FindPortDescriptionPoint(
        const std::shared_ptr<ZML::FlowGraphPart>& canvas,
        const std::shared_ptr<Velmar::Lattix::Operator>& op,
        const std::shared_ptr<Velmar::Lattix::Port>& port);
    // The flow-control point captioned exactly "Previous" / "Next" on the node of `op`.
    static std::shared_ptr<FlowControlConnectionPoint> FindPrevPoint(
        const std::shared_ptr<ZML::FlowGraphPart>& canvas,
        const std::shared_ptr<Velmar::Lattix::Operator>& op);
    static std::shared_ptr<FlowControlConnectionPoint> FindNextPoint(
        const std::shared_ptr<ZML::FlowGraphPart>& canvas,
        const std::shared_ptr<Velmar::Lattix::Operator>& op);
    static std::shared_ptr<TestConnectionPoint> FindTestPoint(
        const std::shared_ptr<ZML::FlowGraphPart>& canvas,
        const std::shared_ptr<Velmar::Lattix::Operator>& op);
    static std::shared_ptr<BodyConnectionPoint> FindBodyPoint(
        const std::shared_ptr<ZML::FlowGraphPart>& canvas,
        const std::shared_ptr<Velmar::Lattix::Operator>& op);
    // The branch point of `op` whose flag equals `isTrue`.
    static std::shared_ptr<TrueFalseConnectionPoint> FindTrueFalsePoint(
        const std::shared_ptr<ZML::FlowGraphPart>& canvas,
        const std::shared_ptr<Velmar::Lattix::Operator>& op, bool isTrue);

    // Gives the node of `op` a "Previous" input (at most one connection) and a "Next" output,
    // each inserted at the front of its points and only when missing, so a node that receives both
    // lists "Next" first. Does nothing when `op` has no node on the canvas.
    static void AddFlowControl(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                               const std::shared_ptr<Velmar::Lattix::Operator>& op);
    // Takes the "Next" and "Previous" points (those that exist) off the node of `op`, and with them
    // their connections.
    static void RemoveFlowControl(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                                  const std::shared_ptr<Velmar::Lattix::Operator>& op);
};

}  // namespace quarn::modelgui
