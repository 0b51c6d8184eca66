// The test host as an editor: canvas gestures reach the model through the wired handlers, each
// one recorded as one undo step, and undo brings the model back.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "modelgui/UpdateOperatorInfo.h"
#include "testhost/TestHost.h"

namespace {

using namespace quarn::modelgui;
using quarn::modelgui::testhost::TestHost;
using Velmar::Lattix::Model;
using Velmar::Lattix::Operator;

// Two registered "Add" operators, "Source" and "Sink", not yet linked.
std::shared_ptr<Model> TwoOperators() {
    auto model = std::make_shared<Model>(L"TEST", L"Pipeline");
    for (const auto* name : {L"Source", L"Sink"}) {
        auto op = Velmar::Lattix::OperatorFactory::Create(L"TAMARIN", L"Add");
        op->SetDisplayName(name);
        model->AddOperator(op);
    }
    return model;
}

std::shared_ptr<Operator> Named(const std::shared_ptr<Model>& model, const std::wstring& name) {
    const auto found = model->FindOperators(name);
    return found.empty() ? nullptr : found.front();
}

class HostEditing : public ::testing::Test {
protected:
    void SetUp() override {
        host.OpenModel(TwoOperators());
        host.ResetCalls();
    }
    void TearDown() override { UpdateOperatorInfo::SetIsUpdating(false); }

    std::shared_ptr<PortDescriptionConnectionPoint> PointOf(const std::wstring& op,
                                                            const std::wstring& port) {
        const auto model = host.GetModel();
        const auto engineOp = Named(model, op);
        return GUIUtils::FindPortDescriptionPoint(host.GetFlowGraphPart(), engineOp,
                                                  engineOp->GetPort(port));
    }

    bool Linked() {
        const auto model = host.GetModel();
        return Named(model, L"Sink")->FindParentConnection(Named(model, L"Source")) != nullptr;
    }

    TestHost host;
};

TEST_F(HostEditing, DrawnModelHasANodePerOperator) {
    const auto canvas = host.GetFlowGraphPart();
    for (const auto& op : host.GetModel()->GetOperators()) {
        EXPECT_NE(GUIUtils::FindOperatorNode(canvas, op), nullptr);
    }
    EXPECT_NE(PointOf(L"Source", L"Output"), nullptr);
    EXPECT_NE(PointOf(L"Sink", L"Input1"), nullptr);
}

TEST_F(HostEditing, ConnectionGestureLinksRecordsAndUndoes) {
    const auto canvas = host.GetFlowGraphPart();
    ASSERT_NE(canvas->UserConnect(PointOf(L"Source", L"Output"), PointOf(L"Sink", L"Input1")),
              nullptr);
    EXPECT_TRUE(Linked());
    EXPECT_EQ(host.GetCalls().prepared, std::vector<bool>{true});
    EXPECT_EQ(host.GetCalls().completed, (std::vector<std::pair<bool, bool>>{{true, true}}));
    EXPECT_EQ(host.GetCalls().recorded, 1);
    EXPECT_TRUE(host.GetCalls().errors.empty());

    ASSERT_TRUE(host.Undo());
    EXPECT_FALSE(Linked());
    EXPECT_EQ(canvas->GetConnectionCount(), 0u);
    ASSERT_TRUE(host.Redo());
    EXPECT_TRUE(Linked());
    EXPECT_GE(canvas->GetConnectionCount(), 1u);

    // Removing the connection on the canvas takes the link out of the model again.
    const auto connection =
        canvas->FindConnection(PointOf(L"Sink", L"Input1"), PointOf(L"Source", L"Output"));
    ASSERT_NE(connection, nullptr);
    ASSERT_TRUE(canvas->UserRemoveConnection(connection));
    EXPECT_FALSE(Linked());
}

TEST_F(HostEditing, MovedNodeWritesItsPositionAsOneStep) {
    ASSERT_TRUE(UpdateOperatorInfo::IsUpdating());  // drawing ends with write-back enabled
    const auto canvas = host.GetFlowGraphPart();
    const auto source = Named(host.GetModel(), L"Source");
    const auto node = GUIUtils::FindOperatorNode(canvas, source);
    ASSERT_TRUE(canvas->UserMoveNodes({node}, 15, 25));
    const auto x =
        std::dynamic_pointer_cast<Velmar::Lattix::IntData>(source->GetAttribute(L"PositionX"));
    ASSERT_NE(x, nullptr);
    EXPECT_EQ(x->GetValue(), node->GetLocation().x);
    EXPECT_EQ(host.GetCalls().recorded, 1);

    ASSERT_TRUE(host.Undo());
    const auto undone = Named(host.GetModel(), L"Source");
    const auto undoneX =
        std::dynamic_pointer_cast<Velmar::Lattix::IntData>(undone->GetAttribute(L"PositionX"));
    EXPECT_TRUE(!undoneX || undoneX->GetValue() != node->GetLocation().x);
}

TEST_F(HostEditing, DeletedSelectionLeavesTheModel) {
    const auto canvas = host.GetFlowGraphPart();
    ASSERT_NE(canvas->UserConnect(PointOf(L"Source", L"Output"), PointOf(L"Sink", L"Input1")),
              nullptr);
    const auto sink = Named(host.GetModel(), L"Sink");
    host.Select({GUIUtils::FindOperatorNode(canvas, sink)});
    std::vector<std::shared_ptr<Operator>> selected;
    host.GetSelectedOperators(selected);
    EXPECT_EQ(selected, std::vector<std::shared_ptr<Operator>>{sink});

    ASSERT_TRUE(canvas->UserDeleteSelection());
    EXPECT_FALSE(host.GetModel()->ContainsOperator(sink));
    EXPECT_EQ(host.GetModel()->GetOperators().size(), 1u);
    EXPECT_TRUE(host.GetCalls().errors.empty());
}

TEST_F(HostEditing, HandlerErrorIsLoggedRedrawnAndNotRecorded) {
    // A point on a node that stands for no operator: the connection handler refuses it.
    const auto canvas = host.GetFlowGraphPart();
    auto stray = std::make_shared<OperatorNode>();
    auto strayPoint = std::make_shared<PortDescriptionConnectionPoint>();
    strayPoint->SetOutput();
    stray->AddConnectionPoint(strayPoint);
    canvas->AddNode(stray);
    ASSERT_NE(canvas->UserConnect(strayPoint, PointOf(L"Sink", L"Input1")), nullptr);
    EXPECT_FALSE(host.GetCalls().errors.empty());
    EXPECT_EQ(host.GetCalls().completed, (std::vector<std::pair<bool, bool>>{{true, false}}));
    EXPECT_EQ(host.GetCalls().recorded, 0);
    EXPECT_EQ(host.GetCalls().redraws, 1);
    EXPECT_FALSE(stray->IsOnCanvas());  // the redraw shows the model only
}

TEST_F(HostEditing, ReadOnlyHostRemovesNothing) {
    const auto canvas = host.GetFlowGraphPart();
    host.Select({GUIUtils::FindOperatorNode(canvas, Named(host.GetModel(), L"Sink"))});
    host.SetEditable(false);
    host.RemoveSelectedOperators();
    EXPECT_EQ(host.GetModel()->GetOperators().size(), 2u);
    host.SetEditable(true);
    host.RemoveSelectedOperators();
    EXPECT_EQ(host.GetModel()->GetOperators().size(), 1u);
    EXPECT_EQ(host.GetCalls().recorded, 1);
}

}  // namespace
