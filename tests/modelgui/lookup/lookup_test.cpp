// Finding canvas elements by engine object: first match in canvas order, never an expired one,
// and the same answers whatever the canvas went through since the last lookup.

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/BodyConnectionPoint.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "modelgui/PortNode.h"
#include "modelgui/TestConnectionPoint.h"
#include "modelgui/TrueFalseConnectionPoint.h"

namespace {

using namespace quarn::modelgui;
using Velmar::Lattix::Operator;
using Velmar::Lattix::Port;
using Velmar::Lattix::PortDirection;

std::shared_ptr<OperatorNode> NodeFor(const std::shared_ptr<Operator>& op) {
    auto node = std::make_shared<OperatorNode>();
    node->SetOperator(op);
    return node;
}

std::shared_ptr<FlowControlConnectionPoint> FlowPoint(const std::wstring& caption) {
    auto point = std::make_shared<FlowControlConnectionPoint>();
    point->SetCaption(caption);
    return point;
}

TEST(Lookup, EveryLookupIsEmptyWithoutTheNode) {
    auto canvas = std::make_shared<ZML::FlowGraphPart>();
    auto drawn = std::make_shared<Operator>(L"TEST", L"Drawn");
    auto absent = std::make_shared<Operator>(L"TEST", L"Absent");
    auto port = absent->AddPort(L"in", PortDirection::Input);
    canvas->AddNode(NodeFor(drawn));

    EXPECT_EQ(GUIUtils::FindOperatorNode(canvas, absent), nullptr);
    EXPECT_EQ(GUIUtils::FindPortNode(canvas, port), nullptr);
    EXPECT_EQ(GUIUtils::FindPortDescriptionPoint(canvas, absent, port), nullptr);
    EXPECT_EQ(GUIUtils::FindPrevPoint(canvas, absent), nullptr);
    EXPECT_EQ(GUIUtils::FindNextPoint(canvas, absent), nullptr);
    EXPECT_EQ(GUIUtils::FindTestPoint(canvas, absent), nullptr);
    EXPECT_EQ(GUIUtils::FindBodyPoint(canvas, absent), nullptr);
    EXPECT_EQ(GUIUtils::FindTrueFalsePoint(canvas, absent, true), nullptr);
    EXPECT_EQ(GUIUtils::FindOperatorNode(canvas, nullptr), nullptr);
    EXPECT_EQ(GUIUtils::FindOperatorNode(nullptr, drawn), nullptr);
}

TEST(Lookup, PointsByClassCaptionFlagAndPort) {
    auto canvas = std::make_shared<ZML::FlowGraphPart>();
    auto op = std::make_shared<Operator>(L"TEST", L"If");
    auto in = op->AddPort(L"in", PortDirection::Input);
    auto out = op->AddPort(L"out", PortDirection::Output);
    auto node = NodeFor(op);

    auto lowerPrevious = FlowPoint(L"previous");
    auto previous = FlowPoint(L"Previous");
    auto next = FlowPoint(L"Next");
    auto inPoint = std::make_shared<PortDescriptionConnectionPoint>();
    inPoint->SetThePort(in);
    auto outPoint = std::make_shared<PortDescriptionConnectionPoint>();
    outPoint->SetThePort(out);
    auto test = std::make_shared<TestConnectionPoint>();
    auto secondTest = std::make_shared<TestConnectionPoint>();
    auto body = std::make_shared<BodyConnectionPoint>();
    auto isFalse = std::make_shared<TrueFalseConnectionPoint>();
    isFalse->SetIsTruePoint(false);
    auto isTrue = std::make_shared<TrueFalseConnectionPoint>();
    isTrue->SetIsTruePoint(true);
    for (const auto& point : std::vector<std::shared_ptr<ZML::FlowGraphConnectionPointEx>>{
             lowerPrevious, previous, next, inPoint, outPoint, test, secondTest, body, isFalse,
             isTrue}) {
        node->AddConnectionPoint(point);
    }
    canvas->AddNode(node);

    EXPECT_EQ(GUIUtils::FindOperatorNode(canvas, op), node);
    EXPECT_EQ(GUIUtils::FindPrevPoint(canvas, op), previous);
    EXPECT_EQ(GUIUtils::FindNextPoint(canvas, op), next);
    EXPECT_EQ(GUIUtils::FindPortDescriptionPoint(canvas, op, in), inPoint);
    EXPECT_EQ(GUIUtils::FindPortDescriptionPoint(canvas, op, out), outPoint);
    EXPECT_EQ(
        GUIUtils::FindPortDescriptionPoint(canvas, op, Port::Create(L"x", PortDirection::Input)),
        nullptr);
    EXPECT_EQ(GUIUtils::FindTestPoint(canvas, op), test);
    EXPECT_EQ(GUIUtils::FindBodyPoint(canvas, op), body);
    EXPECT_EQ(GUIUtils::FindTrueFalsePoint(canvas, op, true), isTrue);
    EXPECT_EQ(GUIUtils::FindTrueFalsePoint(canvas, op, false), isFalse);

    // Only the wrong-case point left: not found.
    node->RemoveConnectionPoint(previous);
    EXPECT_EQ(GUIUtils::FindPrevPoint(canvas, op), nullptr);
}

TEST(Lookup, FirstMatchInCanvasOrderAndNeverAnExpiredOne) {
    auto canvas = std::make_shared<ZML::FlowGraphPart>();
    auto op = std::make_shared<Operator>(L"TEST", L"Twice");
    auto first = NodeFor(op);
    auto second = NodeFor(op);
    canvas->AddNode(first);
    canvas->AddNode(second);
    EXPECT_EQ(GUIUtils::FindOperatorNode(canvas, op), first);

    canvas->RemoveNode(first);
    EXPECT_EQ(GUIUtils::FindOperatorNode(canvas, op), second);
    canvas->AddNode(first);  // now last in canvas order
    EXPECT_EQ(GUIUtils::FindOperatorNode(canvas, op), second);

    // A node whose operator has gone matches nothing, not even a new operator that may reuse the
    // address.
    auto gone = std::make_shared<Operator>(L"TEST", L"Gone");
    auto goneNode = NodeFor(gone);
    canvas->AddNode(goneNode);
    gone.reset();
    for (int i = 0; i < 8; ++i) {
        auto fresh = std::make_shared<Operator>(L"TEST", L"Fresh");
        EXPECT_EQ(GUIUtils::FindOperatorNode(canvas, fresh), nullptr);
    }
    canvas->RemoveAllNodes();
    EXPECT_EQ(GUIUtils::FindOperatorNode(canvas, op), nullptr);
}

TEST(Lookup, NodesBoundOnTheCanvasAndChangesMadeByObserversAreFound) {
    auto canvas = std::make_shared<ZML::FlowGraphPart>();
    auto a = std::make_shared<Operator>(L"TEST", L"A");
    auto b = std::make_shared<Operator>(L"TEST", L"B");
    auto late = std::make_shared<OperatorNode>();
    canvas->AddNode(NodeFor(a));
    EXPECT_EQ(GUIUtils::FindOperatorNode(canvas, b), nullptr);
    canvas->AddNode(late);
    late->SetOperator(b);  // bound after it went on the canvas
    EXPECT_EQ(GUIUtils::FindOperatorNode(canvas, b), late);

    // An observer that adds a node of the same operator while the canvas reports the first one:
    // the first added is still the first match.
    auto c = std::make_shared<Operator>(L"TEST", L"C");
    auto outer = NodeFor(c);
    auto inner = NodeFor(c);
    bool added = false;
    auto token = canvas->OnChange([&](const ZML::FlowGraphChange& change) {
        if (change.kind == ZML::FlowGraphChange::Kind::NodeAdded && change.node == outer &&
            !added) {
            added = true;
            canvas->AddNode(inner);
        }
    });
    canvas->AddNode(outer);
    EXPECT_EQ(GUIUtils::FindOperatorNode(canvas, c), outer);
}

TEST(Lookup, PortNodes) {
    auto canvas = std::make_shared<ZML::FlowGraphPart>();
    auto port = Port::Create(L"Outer", PortDirection::Input);
    auto node = std::make_shared<PortNode>();
    node->SetThePort(port);
    canvas->AddNode(NodeFor(std::make_shared<Operator>()));
    canvas->AddNode(node);
    EXPECT_EQ(GUIUtils::FindPortNode(canvas, port), node);
    EXPECT_EQ(GUIUtils::FindPortNode(canvas, Port::Create(L"Other", PortDirection::Input)),
              nullptr);
    node->Remove();
    EXPECT_EQ(GUIUtils::FindPortNode(canvas, port), nullptr);
}

TEST(Lookup, IndexesOfSeparateCanvasesDoNotMix) {
    auto op = std::make_shared<Operator>(L"TEST", L"Shared");
    auto one = std::make_shared<ZML::FlowGraphPart>();
    auto two = std::make_shared<ZML::FlowGraphPart>();
    auto nodeOne = NodeFor(op);
    auto nodeTwo = NodeFor(op);
    one->AddNode(nodeOne);
    two->AddNode(nodeTwo);
    EXPECT_EQ(GUIUtils::FindOperatorNode(one, op), nodeOne);
    EXPECT_EQ(GUIUtils::FindOperatorNode(two, op), nodeTwo);
    one.reset();
    // A canvas made after another was destroyed starts with an index of its own.
    auto three = std::make_shared<ZML::FlowGraphPart>();
    EXPECT_EQ(GUIUtils::FindOperatorNode(three, op), nullptr);
}

}  // namespace
