// Writing node positions, orientation and the flow-control flag back into the model.

#include <gtest/gtest.h>

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

namespace {

using namespace quarn::modelgui;
using Velmar::Lattix::BoolData;
using Velmar::Lattix::Data;
using Velmar::Lattix::DictionaryData;
using Velmar::Lattix::IntData;
using Velmar::Lattix::Operator;
using Velmar::Lattix::Port;
using Velmar::Lattix::PortDirection;

std::int64_t Whole(const std::shared_ptr<Data>& value) {
    const auto number = std::dynamic_pointer_cast<IntData>(value);
    EXPECT_NE(number, nullptr);
    return number ? number->GetValue() : -1;
}

bool Flag(const std::shared_ptr<Data>& value) {
    const auto flag = std::dynamic_pointer_cast<BoolData>(value);
    EXPECT_NE(flag, nullptr);
    return flag && flag->GetValue();
}

// The flag is process-wide: leave it as the next test expects it.
class UpdateInfo : public ::testing::Test {
protected:
    void TearDown() override { UpdateOperatorInfo::SetIsUpdating(false); }
    std::shared_ptr<ZML::FlowGraphPart> canvas = std::make_shared<ZML::FlowGraphPart>();
};

TEST_F(UpdateInfo, MovedNodesWriteBackOnlyWhileUpdating) {
    auto op = std::make_shared<Operator>(L"TEST", L"Moved");
    auto node = std::make_shared<OperatorNode>();
    node->SetOperator(op);
    canvas->AddNode(node);
    auto token =
        canvas->OnNodeChanged([this](const std::shared_ptr<ZML::FlowGraphNodeEx>& changed) {
            UpdateOperatorInfo::UpdateInfo(canvas, changed);
        });

    UpdateOperatorInfo::SetIsUpdating(false);
    ASSERT_TRUE(canvas->UserMoveNodes({node}, 30, 40));
    EXPECT_TRUE(op->GetAttributeMap().empty());

    UpdateOperatorInfo::SetIsUpdating(true);
    node->SetOrientation(ZML::FlowGraphNodeEx::TopToBottom);
    ASSERT_TRUE(canvas->UserMoveNodes({node}, -50, 5));
    EXPECT_EQ(Whole(op->GetAttribute(L"PositionX")), node->GetLocation().x);
    EXPECT_EQ(Whole(op->GetAttribute(L"PositionY")), node->GetLocation().y);
    EXPECT_EQ(node->GetLocation().x, -20);
    EXPECT_EQ(Whole(op->GetAttribute(L"Orientation")), ZML::FlowGraphNodeEx::TopToBottom);
    EXPECT_FALSE(Flag(op->GetAttribute(L"FlowControl")));

    GUIUtils::AddFlowControl(canvas, op);
    UpdateOperatorInfo::UpdateInfo(canvas, node);
    EXPECT_TRUE(Flag(op->GetAttribute(L"FlowControl")));
    GUIUtils::RemoveFlowControl(canvas, op);
    UpdateOperatorInfo::UpdateInfo(canvas, node);
    EXPECT_FALSE(Flag(op->GetAttribute(L"FlowControl")));
}

TEST_F(UpdateInfo, ModelPortsAndAnnotations) {
    UpdateOperatorInfo::SetIsUpdating(true);
    auto port = Port::Create(L"Outer", PortDirection::Input);
    auto portNode = std::make_shared<PortNode>();
    portNode->SetThePort(port);
    portNode->SetLocation(7, 9);
    portNode->SetOrientation(ZML::FlowGraphNodeEx::RightToLeft);
    UpdateOperatorInfo::UpdateInfo(canvas, portNode);
    EXPECT_EQ(Whole(port->GetAttribute(L"PositionX")), 7);
    EXPECT_EQ(Whole(port->GetAttribute(L"PositionY")), 9);
    EXPECT_EQ(Whole(port->GetAttribute(L"Orientation")), ZML::FlowGraphNodeEx::RightToLeft);

    auto dictionary = std::make_shared<DictionaryData>();
    (*dictionary)[L"String"] = L"A note";
    auto text = std::make_shared<TextNode>();
    text->SetDictionary(dictionary);
    text->SetLocation(-3, 120);
    UpdateOperatorInfo::UpdateInfo(canvas, text);
    EXPECT_EQ((*dictionary)[L"PositionX"].AsInt(), -3);
    EXPECT_EQ((*dictionary)[L"PositionY"].AsInt(), 120);
    EXPECT_EQ((*dictionary)[L"String"].AsString(), L"A note");
}

TEST_F(UpdateInfo, GoneObjectsAndForeignNodesAreLeftAlone) {
    UpdateOperatorInfo::SetIsUpdating(true);
    auto node = std::make_shared<OperatorNode>();
    {
        auto op = std::make_shared<Operator>();
        node->SetOperator(op);
    }
    node->SetLocation(1, 2);
    EXPECT_NO_THROW(UpdateOperatorInfo::UpdateInfo(canvas, node));
    EXPECT_NO_THROW(UpdateOperatorInfo::UpdateInfo(canvas, std::make_shared<PortNode>()));
    EXPECT_NO_THROW(UpdateOperatorInfo::UpdateInfo(canvas, std::make_shared<TextNode>()));
    EXPECT_NO_THROW(UpdateOperatorInfo::UpdateInfo(canvas, nullptr));
}

TEST_F(UpdateInfo, PositionSettersStoreWholeNumbers) {
    auto op = std::make_shared<Operator>();
    UpdateOperatorInfo::SetOperatorPosition(op, INT32_MIN, INT32_MAX);
    EXPECT_EQ(Whole(op->GetAttribute(L"PositionX")), INT32_MIN);
    EXPECT_EQ(Whole(op->GetAttribute(L"PositionY")), INT32_MAX);
    auto port = Port::Create(L"p", PortDirection::Output);
    UpdateOperatorInfo::SetPortPosition(port, 0, -1);
    EXPECT_EQ(Whole(port->GetAttribute(L"PositionX")), 0);
    EXPECT_EQ(Whole(port->GetAttribute(L"PositionY")), -1);
}

}  // namespace
