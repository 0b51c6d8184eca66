// The Body and Test points of the drawn loops, and the links the model already holds at them.

#include "LoopPoints.h"

#include <vector>

#include "LattixBasic/ConditionalProcess.h"
#include "LattixBasic/IfProcess.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphConnectionEx.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/BodyConnectionPoint.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "modelgui/TestConnectionPoint.h"

namespace lattix::modeler {

namespace lx = Velmar::Lattix;
namespace mg = quarn::modelgui;

namespace {

// Drawn with the canvas's program operation, as the library draws existing links: it reports to
// the view only, never to the host's gesture callbacks, so nothing here becomes an undo step.
void Join(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
          const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& input,
          const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& output) {
    if (!input || !output || canvas->FindConnection(input, output)) return;
    auto connection = std::make_shared<ZML::FlowGraphConnectionEx>();
    connection->SetInputPoint(input);
    connection->SetOutputPoint(output);
    canvas->AddConnection(connection);
}

bool IsLoop(const std::shared_ptr<lx::Operator>& op) {
    return std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(op) &&
           !std::dynamic_pointer_cast<LattixBasic::IfProcess>(op);
}

void AddPoints(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
               const std::shared_ptr<lx::Operator>& loop) {
    const auto node = mg::GUIUtils::FindOperatorNode(canvas, loop);
    if (!node) return;
    if (!mg::GUIUtils::FindBodyPoint(canvas, loop)) {
        auto body = std::make_shared<mg::BodyConnectionPoint>();
        body->SetTooltip(L"Body: the operators run on each pass");
        node->AddConnectionPoint(body);
    }
    if (!mg::GUIUtils::FindTestPoint(canvas, loop)) {
        auto test = std::make_shared<mg::TestConnectionPoint>();
        test->SetTooltip(L"Test: the boolean output that decides whether the body runs");
        // A loop has one test; drawing another must first remove the one it has.
        test->SetMaxConnections(1);
        node->AddConnectionPoint(test);
    }
}

// Gives `op` its flow-control points when it has none yet; answers whether it was given them.
bool AddFlowPoints(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                   const std::shared_ptr<lx::Operator>& op) {
    if (mg::GUIUtils::FindPrevPoint(canvas, op)) return false;
    mg::GUIUtils::AddFlowControl(canvas, op);
    return mg::GUIUtils::FindPrevPoint(canvas, op) != nullptr;
}

// The flow links of `op` whose far ends show flow points: the drawing would have joined them had
// `op` shown its points then, and leaving them out would invite the user to draw them twice.
void DrawFlowLinks(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                   const std::vector<std::shared_ptr<lx::Operator>>& operators,
                   const std::shared_ptr<lx::Operator>& op) {
    const auto previous = mg::GUIUtils::FindPrevPoint(canvas, op);
    for (const auto& parent : op->GetParents()) {
        Join(canvas, previous, mg::GUIUtils::FindNextPoint(canvas, parent));
    }
    const auto next = mg::GUIUtils::FindNextPoint(canvas, op);
    for (const auto& other : operators) {
        if (other == op || !other->IsParent(op)) continue;
        Join(canvas, mg::GUIUtils::FindPrevPoint(canvas, other), next);
    }
}

}  // namespace

void LoopPoints::Add(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                     const std::shared_ptr<lx::Model>& model) {
    if (!canvas || !model) return;
    const auto operators = model->GetOperators();
    std::vector<std::shared_ptr<lx::Operator>> flowed;
    for (const auto& op : operators) {
        if (!IsLoop(op)) continue;
        AddPoints(canvas, op);
        const auto loop = std::static_pointer_cast<LattixBasic::ConditionalProcess>(op);
        const auto bodyPoint = mg::GUIUtils::FindBodyPoint(canvas, loop);
        for (const auto& member : loop->GetBody()) {
            if (!mg::GUIUtils::FindOperatorNode(canvas, member)) continue;
            if (AddFlowPoints(canvas, member)) flowed.push_back(member);
            Join(canvas, mg::GUIUtils::FindPrevPoint(canvas, member), bodyPoint);
        }
        if (const auto tester = loop->GetTestOperator()) {
            Join(canvas, mg::GUIUtils::FindTestPoint(canvas, loop),
                 mg::GUIUtils::FindPortDescriptionPoint(canvas, tester, loop->GetTestPort()));
        }
    }
    for (const auto& op : flowed) DrawFlowLinks(canvas, operators, op);
}

}  // namespace lattix::modeler
