// Giving operator nodes their "Previous" and "Next" points and taking them away.

#include <gtest/gtest.h>

#include <memory>

#include "Velmar/Lattix/Operator.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"

namespace {

using namespace quarn::modelgui;
using Velmar::Lattix::Operator;

TEST(FlowControlPoints, AddedAtTheFrontOnceAndRemovedWithTheirConnections) {
    auto canvas = std::make_shared<ZML::FlowGraphPart>();
    auto op = std::make_shared<Operator>(L"TEST", L"Step");
    auto other = std::make_shared<Operator>(L"TEST", L"Other");
    auto node = std::make_shared<OperatorNode>();
    node->SetOperator(op);
    node->AddConnectionPoint(std::make_shared<PortDescriptionConnectionPoint>());
    auto otherNode = std::make_shared<OperatorNode>();
    otherNode->SetOperator(other);
    canvas->AddNode(node);
    canvas->AddNode(otherNode);

    GUIUtils::AddFlowControl(canvas, op);
    GUIUtils::AddFlowControl(canvas, op);
    const auto points = node->GetFlowConnectionPoints();
    ASSERT_EQ(points.size(), 3u);
    const auto next = std::dynamic_pointer_cast<FlowControlConnectionPoint>(points[0]);
    const auto previous = std::dynamic_pointer_cast<FlowControlConnectionPoint>(points[1]);
    ASSERT_TRUE(next && previous);
    EXPECT_EQ(next->GetCaption(), L"Next");
    EXPECT_EQ(next->GetTooltip(), L"Next");
    EXPECT_TRUE(next->IsOutput());
    EXPECT_EQ(next->GetMaxConnections(), 0);
    EXPECT_EQ(next->GetOperator(), op);
    EXPECT_EQ(previous->GetCaption(), L"Previous");
    EXPECT_EQ(previous->GetTooltip(), L"Previous");
    EXPECT_TRUE(previous->IsInput());
    EXPECT_EQ(previous->GetMaxConnections(), 1);
    EXPECT_EQ(previous->GetOperator(), op);

    GUIUtils::AddFlowControl(canvas, other);
    ASSERT_NE(canvas->UserConnect(next, GUIUtils::FindPrevPoint(canvas, other)), nullptr);
    GUIUtils::RemoveFlowControl(canvas, op);
    EXPECT_EQ(node->GetConnectionPointCount(), 1u);
    EXPECT_EQ(canvas->GetConnectionCount(), 0u);
    EXPECT_EQ(GUIUtils::FindNextPoint(canvas, op), nullptr);

    // Without a node, nothing happens.
    auto absent = std::make_shared<Operator>();
    GUIUtils::AddFlowControl(canvas, absent);
    GUIUtils::RemoveFlowControl(canvas, absent);
    EXPECT_EQ(canvas->GetNodeCount(), 2u);
}

}  // namespace
