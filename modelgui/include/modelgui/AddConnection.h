#pragma once

#include <memory>

namespace ZML {
class FlowGraphPart;
class FlowGraphConnectionEx;
}  // namespace ZML
namespace Velmar::Lattix {
class Model;
}

namespace quarn::modelgui {

// Turns a connection the user drew on the canvas into the matching change of the engine model: a
// data link between two operator ports, an alias between a model port and an operator port, a
// flow-control link, a branch of an if operator, or the body or test of a conditional operator.
// Static members only.
class AddConnection {
public:
    AddConnection() = delete;

    // Called after `canvas` added `connection`; `model` is the model drawn on the canvas. None of
    // the pointers may be null, and both ends of the connection must be on nodes that stand for
    // live engine objects (QuarnLog::Exception otherwise). Engine errors pass out unchanged; the
    // canvas connection then stays as the toolkit keeps it, and the caller redraws.
    static void OnAdded(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                        const std::shared_ptr<Velmar::Lattix::Model>& model,
                        const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection);
};

}  // namespace quarn::modelgui
