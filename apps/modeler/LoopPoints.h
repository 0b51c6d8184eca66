#pragma once

#include <memory>

namespace ZML {
class FlowGraphPart;
}
namespace Velmar::Lattix {
class Model;
}

namespace lattix::modeler {

// The loop points of the drawn model. The drawing library gives if operators their branch points
// but leaves the "Body" output and the "Test" input of the other conditional operators (loops) to
// the host, so that only a host which handles those links offers them. Called right after every
// drawing of the model.
//
// Each conditional operator that is not an if operator gets one Body and one Test point; its body
// operators get their "Previous" and "Next" points when they lack them; and the links the model
// already holds are drawn as canvas connections: Body to each body operator's Previous, the test
// operator's port to Test, and the flow links that the new flow points make visible. All of it is
// drawn the way the library draws existing links, so the canvas reports none of it to the host as
// an edit; what the user then draws or deletes at these points goes the usual gesture path.
//
// User-interface thread only.
class LoopPoints {
public:
    LoopPoints() = delete;

    // Adds the points and connections for `model` drawn on `canvas`; nothing when either is empty.
    static void Add(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                    const std::shared_ptr<Velmar::Lattix::Model>& model);
};

}  // namespace lattix::modeler
