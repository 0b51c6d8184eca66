#include "modelgui/AddConnection.h"

#include "LattixBasic/ConditionalProcess.h"
#include "LattixBasic/IfProcess.h"
#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphConnectionEx.h"
#include "ZML/FlowGraphPart.h"
#include "connectionends.h"
#include "modelgui/BodyConnectionPoint.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/TestConnectionPoint.h"
#include "modelgui/TrueFalseConnectionPoint.h"

// What the model is told. The engine's model has three notifications for the editor (see
// Velmar/Lattix/Model.h):
//  - NotifyOperatorConnecting(op) comes before a flow link (op is the parent) or an
//    operator-to-operator data link (op is the child). It refuses an operator of another model, so
//    that nothing is linked across models by mistake, and forgets the operator's results.
//  - NotifyOperatorAttached(owner, op, testPort) comes before op is hung under a conditional
//    operator: as its body, as a branch of an if operator, or as its test (then with the boolean
//    port read from the point). It checks that owner is a conditional and that both are in the
//    model, and forgets both results. The conditional itself is then given the link:
//    ConditionalProcess::AddBodyOperator, IfProcess::AddIfTail / AddElseTail, or
//    ConditionalProcess::SetTest.
//  - NotifyOperatorUnconnected(op) comes after a removal that left op without links (see
//    RemoveConnection); it drops the information messages op carried about its links.
// Aliases between a model port and an operator port need no notification: they change what the
// model offers its user, not how its operators run.

namespace quarn::modelgui {

namespace lx = Velmar::Lattix;

namespace {

constexpr const char* kFunction = "quarn::modelgui::AddConnection::OnAdded";

// The record of one call.
using addRecord = detail::ConnectionCall;
using detail::ModelOf;

std::shared_ptr<LattixBasic::ConditionalProcess> RequireConditional(
    const std::shared_ptr<lx::Operator>& op) {
    auto conditional = std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(op);
    if (!conditional) {
        throw QuarnLog::Exception(
            kFunction, __FILE__,
            L"Operator \"" + op->GetDisplayName() + L"\" is not a conditional operator.");
    }
    return conditional;
}

void AddTestConnection(const addRecord& record) {
    // The operator at the output end computes the condition; the one carrying the Test point owns
    // it.
    const auto& test = record.ends.parent;
    auto owner = RequireConditional(record.ends.child);
    auto testPort = detail::PortOf(record.ends.outputPoint);
    ModelOf(record, owner)->NotifyOperatorAttached(owner, test, testPort);
    owner->SetTest(test, testPort);
}

void AddBranchConnection(const addRecord& record) {
    const auto& parent = record.ends.parent;
    const auto& child = record.ends.child;
    ModelOf(record, parent)->NotifyOperatorAttached(parent, child, nullptr);
    if (auto branch = std::dynamic_pointer_cast<LattixBasic::IfProcess>(parent)) {
        auto point = std::static_pointer_cast<TrueFalseConnectionPoint>(record.ends.outputPoint);
        if (point->IsTruePoint()) {
            branch->AddIfTail(child);
        } else {
            branch->AddElseTail(child);
        }
    }
    child->InvalidateExecution();
}

void AddBodyConnection(const addRecord& record) {
    auto owner = RequireConditional(record.ends.parent);
    const auto& child = record.ends.child;
    ModelOf(record, owner)->NotifyOperatorAttached(owner, child, nullptr);
    owner->AddBodyOperator(child);
}

void AddFlowConnection(const addRecord& record) {
    const auto& parent = record.ends.parent;
    ModelOf(record, parent)->NotifyOperatorConnecting(parent);
    record.ends.child->AddParent(parent);
}

void AddDataConnection(const addRecord& record) {
    const auto& parent = record.ends.parent;
    const auto& child = record.ends.child;
    const auto& model = record.model;
    auto parentPort = detail::PortOf(record.ends.outputPoint);
    auto childPort = detail::PortOf(record.ends.inputPoint);
    if (!parentPort || !childPort) {
        throw QuarnLog::Exception(kFunction, __FILE__,
                                  L"A data connection needs a port at both ends (from \"" +
                                      parent->GetDisplayName() + L"\" to \"" +
                                      child->GetDisplayName() + L"\").");
    }
    if (detail::CrossesConditional(model, parent, child)) {
        detail::ConnectAcross(record.canvas, record.connection, model, parent, parentPort, child,
                              childPort);
        return;
    }
    if (parent == model) {
        detail::AliasModelInput(model, parentPort, child, childPort);
        return;
    }
    if (child == model) {
        model->AliasPort(parentPort, childPort->GetName());
        return;
    }
    ModelOf(record, child)->NotifyOperatorConnecting(child);
    auto link = lx::Operator::ConnectParent(child, parent, parentPort, childPort);
    if (link) {
        detail::ColorByStatus(record.connection, link->GetStatus());
    }
    child->InvalidateExecution();
    // The engine makes the parent a flow parent along with the data link; show it once.
    auto next = GUIUtils::FindNextPoint(record.canvas, parent);
    auto previous = GUIUtils::FindPrevPoint(record.canvas, child);
    if (next && previous && !record.canvas->FindConnection(previous, next)) {
        auto flow = std::make_shared<ZML::FlowGraphConnectionEx>();
        flow->SetInputPoint(previous);
        flow->SetOutputPoint(next);
        record.canvas->AddConnection(flow);
    }
}

}  // namespace

void AddConnection::OnAdded(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                            const std::shared_ptr<lx::Model>& model,
                            const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection) {
    if (!canvas || !model) {
        throw QuarnLog::Exception(kFunction, __FILE__,
                                  "A connection is added on a canvas of a model; one is missing.");
    }
    addRecord record{canvas, model, connection, detail::ReadEnds(connection, kFunction)};
    const auto& in = record.ends.inputPoint;
    const auto& out = record.ends.outputPoint;
    if (std::dynamic_pointer_cast<TestConnectionPoint>(in)) {
        AddTestConnection(record);
    } else if (std::dynamic_pointer_cast<TrueFalseConnectionPoint>(out)) {
        AddBranchConnection(record);
    } else if (std::dynamic_pointer_cast<BodyConnectionPoint>(out)) {
        AddBodyConnection(record);
    } else if (std::dynamic_pointer_cast<FlowControlConnectionPoint>(out)) {
        AddFlowConnection(record);
    } else {
        AddDataConnection(record);
    }
}

}  // namespace quarn::modelgui
