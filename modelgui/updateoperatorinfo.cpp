// Position, orientation and flow-control write-back from canvas nodes to the model.

#include <atomic>
#include <memory>

#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/DataRef.h"
#include "Velmar/Lattix/DictionaryData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortNode.h"
#include "modelgui/TextNode.h"
#include "modelgui/UpdateOperatorInfo.h"

namespace quarn::modelgui {

namespace {

// False until the first drawing pass ends: nodes placed while a model is being drawn must not write
// their provisional positions back. Atomic only so that a stray read elsewhere is never a race.
std::atomic<bool> isUpdating{false};

std::shared_ptr<Velmar::Lattix::Data> Whole(std::int32_t value) {
    return std::make_shared<Velmar::Lattix::IntData>(value);
}

}  // namespace

void UpdateOperatorInfo::SetIsUpdating(bool updating) {
    isUpdating = updating;
}

bool UpdateOperatorInfo::IsUpdating() {
    return isUpdating;
}

void UpdateOperatorInfo::SetOperatorPosition(const std::shared_ptr<Velmar::Lattix::Operator>& op,
                                             std::int32_t x, std::int32_t y) {
    op->SetAttribute(L"PositionX", Whole(x));
    op->SetAttribute(L"PositionY", Whole(y));
}

void UpdateOperatorInfo::SetPortPosition(const std::shared_ptr<Velmar::Lattix::Port>& port,
                                         std::int32_t x, std::int32_t y) {
    port->SetAttribute(L"PositionX", Whole(x));
    port->SetAttribute(L"PositionY", Whole(y));
}

void UpdateOperatorInfo::UpdateInfo(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                                    const std::shared_ptr<ZML::FlowGraphNodeEx>& node) {
    if (!isUpdating || !node) return;
    const auto location = node->GetLocation();
    if (const auto opNode = std::dynamic_pointer_cast<OperatorNode>(node)) {
        const auto op = opNode->GetOperator();
        if (!op) return;
        SetOperatorPosition(op, location.x, location.y);
        op->SetAttribute(L"Orientation", Whole(node->GetOrientation()));
        const bool hasFlowControl = GUIUtils::FindPrevPoint(canvas, op) != nullptr;
        op->SetAttribute(L"FlowControl",
                         std::make_shared<Velmar::Lattix::BoolData>(hasFlowControl));
    } else if (const auto portNode = std::dynamic_pointer_cast<PortNode>(node)) {
        const auto port = portNode->GetPort();
        if (!port) return;
        SetPortPosition(port, location.x, location.y);
        port->SetAttribute(L"Orientation", Whole(node->GetOrientation()));
    } else if (const auto textNode = std::dynamic_pointer_cast<TextNode>(node)) {
        // An annotation's dictionary is always a DictionaryData; anything else has nowhere to
        // keep a position.
        const auto dictionary =
            std::dynamic_pointer_cast<Velmar::Lattix::DictionaryData>(textNode->GetDictionary());
        if (!dictionary) return;
        (*dictionary)[L"PositionX"] = static_cast<std::int64_t>(location.x);
        (*dictionary)[L"PositionY"] = static_cast<std::int64_t>(location.y);
    }
}

}  // namespace quarn::modelgui
