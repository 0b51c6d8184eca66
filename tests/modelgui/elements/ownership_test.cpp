// Nodes and flow-control points must not keep engine objects alive; port points must.

#include <gtest/gtest.h>

#include <memory>

#include "Velmar/Lattix/DictionaryData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "modelgui/PortNode.h"
#include "modelgui/TextNode.h"

namespace {

using namespace quarn::modelgui;
using Velmar::Lattix::Operator;
using Velmar::Lattix::Port;
using Velmar::Lattix::PortDirection;

TEST(ElementOwnership, GettersStartEmpty) {
    EXPECT_EQ(std::make_shared<OperatorNode>()->GetOperator(), nullptr);
    EXPECT_EQ(std::make_shared<PortNode>()->GetPort(), nullptr);
    EXPECT_EQ(std::make_shared<TextNode>()->GetDictionary(), nullptr);
    EXPECT_EQ(std::make_shared<FlowControlConnectionPoint>()->GetOperator(), nullptr);
    EXPECT_EQ(std::make_shared<PortDescriptionConnectionPoint>()->GetPort(), nullptr);
}

TEST(ElementOwnership, WeakHoldersLetGoStrongPortPointKeeps) {
    auto op = std::make_shared<Operator>(L"TEST", L"Add");
    auto port = op->AddPort(L"Input", PortDirection::Input);
    auto dictionary = std::make_shared<Velmar::Lattix::DictionaryData>();
    auto modelPort = Port::Create(L"Outer", PortDirection::Output);

    auto node = std::make_shared<OperatorNode>();
    node->SetOperator(op);
    auto flow = std::make_shared<FlowControlConnectionPoint>();
    flow->SetOperator(op);
    auto portPoint = std::make_shared<PortDescriptionConnectionPoint>();
    portPoint->SetThePort(port);
    auto portNode = std::make_shared<PortNode>();
    portNode->SetThePort(modelPort);
    auto text = std::make_shared<TextNode>();
    text->SetDictionary(dictionary);

    ASSERT_EQ(node->GetOperator(), op);
    ASSERT_EQ(flow->GetOperator(), op);
    ASSERT_EQ(portNode->GetPort(), modelPort);
    ASSERT_EQ(text->GetDictionary(), dictionary);

    // The operator drops its port, then the model drops everything else.
    const std::weak_ptr<Port> watchedPort = port;
    ASSERT_TRUE(op->RemovePort(L"Input"));
    port.reset();
    op.reset();
    dictionary.reset();
    modelPort.reset();

    EXPECT_EQ(node->GetOperator(), nullptr);
    EXPECT_EQ(flow->GetOperator(), nullptr);
    EXPECT_EQ(portNode->GetPort(), nullptr);
    EXPECT_EQ(text->GetDictionary(), nullptr);
    ASSERT_NE(portPoint->GetPort(), nullptr);
    EXPECT_EQ(portPoint->GetPort()->GetName(), L"Input");

    // Setting another port releases the one held before.
    portPoint->SetThePort(Port::Create(L"Other", PortDirection::Input));
    EXPECT_TRUE(watchedPort.expired());
}

TEST(ElementOwnership, PortPointOnCanvasKeepsItsPortUntilRemoved) {
    ZML::FlowGraphPart canvas;
    auto node = std::make_shared<OperatorNode>();
    auto point = std::make_shared<PortDescriptionConnectionPoint>();
    std::weak_ptr<Port> watched;
    {
        auto port = Port::Create(L"p", PortDirection::Input);
        watched = port;
        point->SetThePort(port);
    }
    node->AddConnectionPoint(point);
    canvas.AddNode(node);
    node.reset();
    point.reset();
    EXPECT_FALSE(watched.expired());
    canvas.RemoveAllNodes();
    EXPECT_TRUE(watched.expired());
}

TEST(ElementOwnership, TextNodeIsTextOnlyWithTheSelectionColour) {
    const auto text = std::make_shared<TextNode>();
    EXPECT_TRUE(text->IsTextOnly());
    EXPECT_EQ(text->GetSelectedTextColor(), 16750899u);
    // Red 51 in the low byte, then green 153, then blue 255.
    EXPECT_EQ(text->GetSelectedTextColor() & 0xFFu, 51u);
    EXPECT_EQ((text->GetSelectedTextColor() >> 8) & 0xFFu, 153u);
    EXPECT_EQ((text->GetSelectedTextColor() >> 16) & 0xFFu, 255u);
}

}  // namespace
