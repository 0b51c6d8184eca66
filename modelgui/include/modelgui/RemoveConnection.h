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

// Undoes in the engine model what a canvas connection stood for, once the user removed it from
// the canvas: the data link or alias, the flow-control link, the branch, the body or the test.
// Static members only.
class RemoveConnection {
public:
    RemoveConnection() = delete;

    // Called after `canvas` removed `connection`; `model` is the model drawn on the canvas. None of
    // the pointers may be null. A link the engine no longer has is logged as
    // "GUI/Data Model integrety error" and the removal goes on; engine errors pass out unchanged.
    static void OnRemoved(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                          const std::shared_ptr<Velmar::Lattix::Model>& model,
                          const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection);
};

}  // namespace quarn::modelgui
