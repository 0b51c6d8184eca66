#pragma once

#include <cstdint>
#include <memory>

namespace ZML {
class FlowGraphPart;
class FlowGraphNodeEx;
}  // namespace ZML
namespace Velmar::Lattix {
class Operator;
class Port;
}  // namespace Velmar::Lattix

namespace quarn::modelgui {

// Writes what the user changed on the canvas back into the model's attributes: positions
// ("PositionX", "PositionY", whole numbers), the toolkit's orientation value ("Orientation") and
// whether an operator has flow-control points ("FlowControl"). One process-wide flag, the
// updating flag, stops the write-back while a drawing pass rebuilds the canvas. User-interface
// thread only.
class UpdateOperatorInfo {
public:
    UpdateOperatorInfo() = delete;

    // Writes the node's location (and orientation, and for operators the "FlowControl" flag) to the
    // operator, model port or text annotation it stands for. Does nothing while the updating flag
    // is false, for a node of another class, or when the engine object has gone.
    static void UpdateInfo(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                           const std::shared_ptr<ZML::FlowGraphNodeEx>& node);
    // Store x under "PositionX" and y under "PositionY". The operator or port must not be null.
    static void SetOperatorPosition(const std::shared_ptr<Velmar::Lattix::Operator>& op,
                                    std::int32_t x, std::int32_t y);
    static void SetPortPosition(const std::shared_ptr<Velmar::Lattix::Port>& port, std::int32_t x,
                                std::int32_t y);
    // Drawing clears the flag at the start of a pass and sets it at the end.
    static void SetIsUpdating(bool updating);
    static bool IsUpdating();
};

}  // namespace quarn::modelgui
