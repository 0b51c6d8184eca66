#include "modelgui/RemoveConnection.h"

#include <algorithm>

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

// After a removal the model is told, through NotifyOperatorUnconnected, about each operator that it
// no longer counts as connected (Model::IsOperatorConnected): the operator's results are forgotten
// and the information messages it carried about its links (such as a value a link overrode) are
// dropped. See AddConnection for the notifications made when links are added.

namespace quarn::modelgui {

namespace lx = Velmar::Lattix;

namespace {

constexpr const char* kFunction = "quarn::modelgui::RemoveConnection::OnRemoved";

// The record of one call.
using removeRecord = detail::ConnectionCall;
using detail::ModelOf;

// Tells the model of `op` that `op` is left without links, when it is.
void NotifyIfUnconnected(const removeRecord& record, const std::shared_ptr<lx::Operator>& op) {
    if (op == record.model) {
        return;
    }
    auto process = ModelOf(record, op);
    if (!process->IsOperatorConnected(op)) {
        process->NotifyOperatorUnconnected(op);
    }
}

void RemoveTestConnection(const removeRecord& record) {
    const auto& test = record.ends.parent;
    auto owner = std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(record.ends.child);
    if (!owner || owner->GetTestOperator() != test || !owner->ClearTest()) {
        detail::LogIntegrityError(kFunction);
        return;
    }
    owner->InvalidateExecution();
    NotifyIfUnconnected(record, test);
    NotifyIfUnconnected(record, owner);
}

void RemoveBranchOrBodyConnection(const removeRecord& record) {
    const auto& child = record.ends.child;
    bool removed = false;
    if (std::dynamic_pointer_cast<TrueFalseConnectionPoint>(record.ends.outputPoint)) {
        auto branch = std::dynamic_pointer_cast<LattixBasic::IfProcess>(record.ends.parent);
        removed = branch && branch->RemoveTail(child);
    } else {
        auto owner = std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(record.ends.parent);
        removed = owner && owner->RemoveBodyOperator(child);
    }
    if (!removed) {
        detail::LogIntegrityError(kFunction);
        return;
    }
    record.ends.parent->InvalidateExecution();
    child->InvalidateExecution();
    NotifyIfUnconnected(record, child);
    NotifyIfUnconnected(record, record.ends.parent);
}

void RemoveFlowConnection(const removeRecord& record) {
    const auto& parent = record.ends.parent;
    const auto& child = record.ends.child;
    if (child->IsParent(parent)) {
        if (!child->RemoveParent(parent)) {
            detail::LogIntegrityError(kFunction);
        }
        NotifyIfUnconnected(record, parent);
    }
}

void RemoveDataConnection(const removeRecord& record) {
    const auto& parent = record.ends.parent;
    const auto& child = record.ends.child;
    const auto& model = record.model;
    auto parentPort = detail::PortOf(record.ends.outputPoint);
    auto childPort = detail::PortOf(record.ends.inputPoint);
    if (!parentPort || !childPort) {
        detail::LogIntegrityError(kFunction);
        return;
    }
    if (detail::CrossesConditional(model, parent, child)) {
        detail::DisconnectAcross(model, parent, parentPort, child, childPort);
        return;
    }
    if (parent == model) {
        detail::UnaliasModelInput(parentPort, childPort);
    } else if (child == model) {
        detail::UnaliasModelOutput(childPort, parentPort);
    } else {
        if (!child->DisconnectParent(parent, parentPort, childPort)) {
            detail::LogIntegrityError(kFunction);
        }
        child->InvalidateExecution();
    }
    NotifyIfUnconnected(record, parent);
    NotifyIfUnconnected(record, child);

    if (parent == model || child == model) {
        return;
    }
    // The flow link the engine made along with the data link goes when no data link is left
    // between the two, and so does its "Next" -> "Previous" connection on the canvas.
    const auto connected = child->GetConnectedOperators();
    if (std::find(connected.begin(), connected.end(), parent) != connected.end()) {
        return;
    }
    if (child->IsParent(parent)) {
        child->RemoveParent(parent);
    }
    if (child->FindParentConnection(parent)) {
        return;
    }
    auto next = GUIUtils::FindNextPoint(record.canvas, parent);
    auto previous = GUIUtils::FindPrevPoint(record.canvas, child);
    if (next && previous) {
        if (auto flow = record.canvas->FindConnection(previous, next)) {
            record.canvas->RemoveConnection(flow);
        }
    }
}

}  // namespace

void RemoveConnection::OnRemoved(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                                 const std::shared_ptr<lx::Model>& model,
                                 const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection) {
    if (!canvas || !model) {
        throw QuarnLog::Exception(
            kFunction, __FILE__,
            "A connection is removed from a canvas of a model; one is missing.");
    }
    removeRecord record{canvas, model, connection, detail::ReadEnds(connection, kFunction)};
    const auto& in = record.ends.inputPoint;
    const auto& out = record.ends.outputPoint;
    if (std::dynamic_pointer_cast<TestConnectionPoint>(in)) {
        RemoveTestConnection(record);
    } else if (std::dynamic_pointer_cast<TrueFalseConnectionPoint>(out) ||
               std::dynamic_pointer_cast<BodyConnectionPoint>(out)) {
        RemoveBranchOrBodyConnection(record);
    } else if (std::dynamic_pointer_cast<FlowControlConnectionPoint>(out)) {
        RemoveFlowConnection(record);
    } else {
        RemoveDataConnection(record);
    }
}

}  // namespace quarn::modelgui
