// Connections drawn and removed by the user on the canvas, and what they change in the model:
// data links, aliases with model ports, flow links, branches, bodies and tests, and links that
// cross into a conditional operator.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "../drawing/drawing_support.h"
#include "LattixBasic/IfProcess.h"
#include "LattixBasic/LoopProcess.h"
#include "QuarnLog/CaptureSink.h"
#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/StringData.h"
#include "modelgui/BodyConnectionPoint.h"
#include "modelgui/DrawGraph.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "modelgui/PortNode.h"
#include "modelgui/TestConnectionPoint.h"
#include "modelgui/TrueFalseConnectionPoint.h"

namespace {

using namespace quarn::modelgui;
using namespace drawtest;

constexpr const char* kIntegrity = "GUI/Data Model integrety error";

class ConnectionTest : public ::testing::Test {
protected:
    std::shared_ptr<lx::Model> model = std::make_shared<lx::Model>();
    WiredCanvas wired{model};
    const std::shared_ptr<ZML::FlowGraphPart>& canvas = wired.canvas;

    void Draw() { DrawGraph::DrawProcess(canvas, model, nullptr, false, false, false); }
    std::shared_ptr<PortDescriptionConnectionPoint> Point(const std::shared_ptr<lx::Operator>& op,
                                                          const std::wstring& port) {
        auto point = GUIUtils::FindPortDescriptionPoint(canvas, op, op->GetPort(port));
        EXPECT_NE(point, nullptr);
        return point;
    }
    std::shared_ptr<ZML::FlowGraphConnectionPointEx> ModelPoint(
        const std::shared_ptr<lx::Port>& port) {
        auto node = GUIUtils::FindPortNode(canvas, port);
        EXPECT_NE(node, nullptr);
        return node ? node->GetFlowConnectionPoints().at(0) : nullptr;
    }
    std::shared_ptr<ZML::FlowGraphConnectionEx> Connect(
        const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& from,
        const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& to) {
        auto connection = canvas->UserConnect(from, to);
        EXPECT_NE(connection, nullptr);
        return connection;
    }
    static bool Contains(const std::vector<std::shared_ptr<lx::Operator>>& ops,
                         const std::shared_ptr<lx::Operator>& op) {
        return std::find(ops.begin(), ops.end(), op) != ops.end();
    }
};

TEST_F(ConnectionTest, DataLinkBetweenOperatorsBringsItsFlowLinkOnceAndTakesItAway) {
    auto a = AddStep(model, L"A");
    auto b = AddStep(model, L"B");
    AddTypedPort(a, L"Out2", lx::PortDirection::Output);
    AddTypedPort(b, L"In2", lx::PortDirection::Input);
    for (const auto& op : {a, b})
        op->SetAttribute(L"FlowControl", std::make_shared<lx::BoolData>(true));
    Draw();

    auto first = Connect(Point(a, L"Out"), Point(b, L"In"));
    auto second = Connect(Point(b, L"In2"), Point(a, L"Out2"));  // drawn from the input end
    ASSERT_NE(b->FindParentConnection(a), nullptr);
    EXPECT_TRUE(b->IsParent(a));
    auto flow = canvas->FindConnection(GUIUtils::FindPrevPoint(canvas, b),
                                       GUIUtils::FindNextPoint(canvas, a));
    ASSERT_NE(flow, nullptr);
    EXPECT_EQ(canvas->GetConnectionCount(), 3u);  // two data links, one flow link

    // Removing one data link keeps the flow link; removing the last takes it away too.
    EXPECT_TRUE(canvas->UserRemoveConnection(first));
    EXPECT_TRUE(b->IsParent(a));
    EXPECT_TRUE(flow->IsOnCanvas());
    EXPECT_TRUE(canvas->UserRemoveConnection(second));
    EXPECT_FALSE(b->IsParent(a));
    EXPECT_EQ(b->FindParentConnection(a), nullptr);
    EXPECT_FALSE(flow->IsOnCanvas());
    EXPECT_EQ(canvas->GetConnectionCount(), 0u);
}

TEST_F(ConnectionTest, DataLinkStatusColoursTheConnection) {
    auto a = AddStep(model, L"A");
    auto b = AddStep(model, L"B");
    AddTypedPort(a, L"Flag", lx::PortDirection::Output, BoolType());
    AddTypedPort(b, L"Text", lx::PortDirection::Input, StringType());
    Draw();
    auto converted = Connect(Point(a, L"Out"), Point(b, L"Text"));
    auto link = b->FindParentConnection(a);
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(link->GetStatus(), 2);
    EXPECT_EQ(converted->GetColor(), 52685u);
    auto c = AddStep(model, L"C");
    Draw();
    auto mismatch = Connect(Point(a, L"Flag"), Point(c, L"In"));
    const int status = c->FindParentConnection(a)->GetStatus();
    EXPECT_EQ(mismatch->GetColor(), status == 1 ? 6579455u : 52685u);
}

TEST_F(ConnectionTest, ModelInputAliasSettlesTheValues) {
    struct Case {
        const char* name;
        std::shared_ptr<lx::Data> modelValue;
        std::shared_ptr<lx::Data> opValue;
        std::wstring modelAfter;  // empty: no value
        std::wstring opAfter;
        bool message;
    };
    const Case cases[] = {
        {"operator value moves", nullptr, std::make_shared<lx::IntData>(5), L"5", L"", false},
        {"equal values", std::make_shared<lx::IntData>(5), std::make_shared<lx::IntData>(5), L"5",
         L"", false},
        {"different values", std::make_shared<lx::IntData>(5), std::make_shared<lx::IntData>(6),
         L"5", L"6", true},
        {"no operator value", std::make_shared<lx::IntData>(5), nullptr, L"5", L"", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto edited = std::make_shared<lx::Model>();
        WiredCanvas local(edited);
        auto op = AddStep(edited, L"Op");
        auto source = edited->AddNewPort(L"Source", lx::PortDirection::Input);
        source->SetSupportedTypes({IntType()});
        source->SetData(c.modelValue);
        op->GetPort(L"In")->SetData(c.opValue);
        DrawGraph::DrawProcess(local.canvas, edited, nullptr, false, false, false);
        auto from = GUIUtils::FindPortNode(local.canvas, source)->GetFlowConnectionPoints().at(0);
        auto to = GUIUtils::FindPortDescriptionPoint(local.canvas, op, op->GetPort(L"In"));
        ASSERT_NE(local.canvas->UserConnect(from, to), nullptr);

        EXPECT_EQ(op->GetPort(L"In")->GetAliasingPort(), source);
        auto modelValue = source->GetExistingData(false);
        auto opValue = op->GetPort(L"In")->GetExistingData(false);
        EXPECT_EQ(modelValue ? modelValue->ToString() : L"", c.modelAfter);
        EXPECT_EQ(opValue ? opValue->ToString() : L"", c.opAfter);
        EXPECT_EQ(op->HasInfo(), c.message);
        if (c.message) {
            EXPECT_EQ(op->GetMessages().at(0).text,
                      L"The value set on In will not be used because a connection has been made "
                      L"to the port.");
        }
    }
}

TEST_F(ConnectionTest, ModelInputAliasRemovalHandsTheValueBack) {
    auto op = AddStep(model, L"Op");
    auto source = model->AddNewPort(L"Source", lx::PortDirection::Input);
    source->SetSupportedTypes({IntType()});
    op->GetPort(L"In")->SetData(std::make_shared<lx::IntData>(8));
    Draw();
    auto connection = Connect(ModelPoint(source), Point(op, L"In"));
    ASSERT_EQ(source->GetExistingData(false)->ToString(), L"8");
    EXPECT_FALSE(op->GetPort(L"In")->HasData());

    EXPECT_TRUE(canvas->UserRemoveConnection(connection));
    EXPECT_EQ(op->GetPort(L"In")->GetAliasingPort(), nullptr);
    EXPECT_TRUE(source->GetInnerAliasedPorts().empty());
    EXPECT_TRUE(source->GetSupportedDataTypes().empty());
    ASSERT_TRUE(op->GetPort(L"In")->HasData());
    EXPECT_EQ(op->GetPort(L"In")->GetExistingData(false)->ToString(), L"8");
    // A copy, not the model's own value.
    EXPECT_NE(op->GetPort(L"In")->GetExistingData(false), source->GetExistingData(false));
}

TEST_F(ConnectionTest, OperatorOutputToModelOutputIsAnAlias) {
    auto op = AddStep(model, L"Op");
    auto result = model->AddNewPort(L"Result", lx::PortDirection::Output);
    Draw();
    auto connection = Connect(Point(op, L"Out"), ModelPoint(result));
    EXPECT_EQ(op->GetPort(L"Out")->GetAliasingPort(), result);
    EXPECT_TRUE(canvas->UserRemoveConnection(connection));
    EXPECT_EQ(op->GetPort(L"Out")->GetAliasingPort(), nullptr);
    EXPECT_TRUE(result->GetInnerAliasedPorts().empty());
}

TEST_F(ConnectionTest, FlowLinkMakesAParentAndASecondRemovalChangesNothing) {
    auto a = AddStep(model, L"A");
    auto b = AddStep(model, L"B");
    for (const auto& op : {a, b})
        op->SetAttribute(L"FlowControl", std::make_shared<lx::BoolData>(true));
    Draw();
    auto connection =
        Connect(GUIUtils::FindNextPoint(canvas, a), GUIUtils::FindPrevPoint(canvas, b));
    EXPECT_TRUE(b->IsParent(a));
    EXPECT_TRUE(b->GetPortConnections().empty());

    QuarnLog::CaptureSink log;
    EXPECT_TRUE(canvas->UserRemoveConnection(connection));
    EXPECT_FALSE(b->IsParent(a));
    // The same removal reported again finds no parent link: nothing changes, nothing is wrong.
    a->SetInfoMessage(L"kept");
    RemoveConnection::OnRemoved(canvas, model, connection);
    EXPECT_FALSE(b->IsParent(a));
    EXPECT_TRUE(a->HasInfo());
    EXPECT_FALSE(log.Contains(kIntegrity));
}

TEST_F(ConnectionTest, BranchesOfAnIfOperator) {
    auto branch = std::make_shared<LattixBasic::IfProcess>();
    model->AddOperator(branch);
    auto yes = AddStep(model, L"Yes");
    auto no = AddStep(model, L"No");
    for (const auto& op : {yes, no})
        op->SetAttribute(L"FlowControl", std::make_shared<lx::BoolData>(true));
    Draw();
    auto toYes = Connect(GUIUtils::FindTrueFalsePoint(canvas, branch, true),
                         GUIUtils::FindPrevPoint(canvas, yes));
    auto toNo = Connect(GUIUtils::FindTrueFalsePoint(canvas, branch, false),
                        GUIUtils::FindPrevPoint(canvas, no));
    EXPECT_TRUE(Contains(branch->GetIfTails(true), yes));
    EXPECT_TRUE(Contains(branch->GetIfTails(false), no));
    EXPECT_TRUE(model->IsOperatorConnected(yes));

    EXPECT_TRUE(canvas->UserRemoveConnection(toYes));
    EXPECT_TRUE(branch->GetIfTails(true).empty());
    EXPECT_TRUE(Contains(branch->GetIfTails(false), no));
    EXPECT_TRUE(canvas->UserRemoveConnection(toNo));
    EXPECT_TRUE(branch->GetIfTails(false).empty());

    // Redrawing a model with tails draws the branch connections again.
    branch->AddIfTail(yes);
    Draw();
    EXPECT_NE(canvas->FindConnection(GUIUtils::FindPrevPoint(canvas, yes),
                                     GUIUtils::FindTrueFalsePoint(canvas, branch, true)),
              nullptr);
}

// Loop points are added by the host; drawing does not make them.
TEST_F(ConnectionTest, BodyAndTestOfALoop) {
    auto loop = std::make_shared<LattixBasic::LoopProcess>();
    model->AddOperator(loop);
    auto body = AddStep(model, L"Body");
    body->SetAttribute(L"FlowControl", std::make_shared<lx::BoolData>(true));
    auto check = AddStep(model, L"Check");
    auto flag = AddTypedPort(check, L"Flag", lx::PortDirection::Output, BoolType());
    Draw();
    auto loopNode = GUIUtils::FindOperatorNode(canvas, loop);
    auto bodyPoint = std::make_shared<BodyConnectionPoint>();
    auto testPoint = std::make_shared<TestConnectionPoint>();
    loopNode->AddConnectionPoint(bodyPoint);
    loopNode->AddConnectionPoint(testPoint);

    // The test takes only a boolean port.
    EXPECT_EQ(canvas->UserConnect(Point(check, L"Out"), testPoint), nullptr);
    auto test = Connect(Point(check, L"Flag"), testPoint);
    EXPECT_EQ(loop->GetTestOperator(), check);
    EXPECT_EQ(loop->GetTestPort(), flag);
    auto bodyLink = Connect(bodyPoint, GUIUtils::FindPrevPoint(canvas, body));
    EXPECT_TRUE(Contains(loop->GetBody(), body));

    EXPECT_TRUE(canvas->UserRemoveConnection(test));
    EXPECT_EQ(loop->GetTestOperator(), nullptr);
    EXPECT_TRUE(canvas->UserRemoveConnection(bodyLink));
    EXPECT_TRUE(loop->GetBody().empty());
    EXPECT_FALSE(model->IsOperatorConnected(body));
}

TEST_F(ConnectionTest, ABodyOnAnOperatorThatIsNoConditionalIsRefused) {
    auto a = AddStep(model, L"A");
    auto b = AddStep(model, L"B");
    b->SetAttribute(L"FlowControl", std::make_shared<lx::BoolData>(true));
    Draw();
    auto bodyPoint = std::make_shared<BodyConnectionPoint>();
    GUIUtils::FindOperatorNode(canvas, a)->AddConnectionPoint(bodyPoint);
    EXPECT_THROW(canvas->UserConnect(bodyPoint, GUIUtils::FindPrevPoint(canvas, b)),
                 QuarnLog::Exception);
    EXPECT_FALSE(model->IsOperatorConnected(b));
}

TEST_F(ConnectionTest, RemovingALinkTheEngineLacksIsLoggedAndGoesOn) {
    auto a = AddStep(model, L"A");
    auto b = AddStep(model, L"B");
    Draw();
    auto connection = Connect(Point(a, L"Out"), Point(b, L"In"));
    b->DisconnectParent(a, a->GetPort(L"Out"), b->GetPort(L"In"));
    QuarnLog::CaptureSink log;
    EXPECT_TRUE(canvas->UserRemoveConnection(connection));
    EXPECT_TRUE(log.Contains(kIntegrity));
    EXPECT_FALSE(b->IsParent(a));
}

TEST_F(ConnectionTest, AConnectionToANodeWithoutItsOperatorIsAClearError) {
    auto a = AddStep(model, L"A");
    auto b = AddStep(model, L"B");
    Draw();
    auto from = Point(a, L"Out");
    auto to = Point(b, L"In");
    model->RemoveOperator(b);
    b.reset();
    try {
        canvas->UserConnect(from, to);
        FAIL() << "no error";
    } catch (const QuarnLog::Exception& error) {
        EXPECT_NE(std::string(error.what()).find("does not join two elements of a model"),
                  std::string::npos);
    }
}

// Drawing the inside of a conditional operator: its own ports are port nodes, and every link
// runs inside the conditional.
TEST_F(ConnectionTest, InsideAConditionalLinksAreMadeInTheConditional) {
    auto outer = std::make_shared<lx::Model>();
    auto loop = std::make_shared<LattixBasic::LoopProcess>();
    outer->AddOperator(loop);
    auto a = AddStep(loop, L"A");
    auto b = AddStep(loop, L"B");
    auto source = loop->AddNewPort(L"Source", lx::PortDirection::Input);
    WiredCanvas inner(loop);
    DrawGraph::DrawProcess(inner.canvas, loop, outer, false, false, false);
    auto pointOf = [&inner](const std::shared_ptr<lx::Operator>& op, const std::wstring& port) {
        return GUIUtils::FindPortDescriptionPoint(inner.canvas, op, op->GetPort(port));
    };
    auto sourcePoint =
        GUIUtils::FindPortNode(inner.canvas, source)->GetFlowConnectionPoints().at(0);
    auto alias = inner.canvas->UserConnect(sourcePoint, pointOf(a, L"In"));
    auto link = inner.canvas->UserConnect(pointOf(a, L"Out"), pointOf(b, L"In"));
    ASSERT_TRUE(alias && link);
    EXPECT_EQ(a->GetPort(L"In")->GetAliasingPort(), source);
    EXPECT_NE(b->FindParentConnection(a), nullptr);

    EXPECT_TRUE(inner.canvas->UserRemoveConnection(link));
    EXPECT_EQ(b->FindParentConnection(a), nullptr);
    EXPECT_TRUE(inner.canvas->UserRemoveConnection(alias));
    EXPECT_EQ(a->GetPort(L"In")->GetAliasingPort(), nullptr);
}

// A canvas that shows an operator of the model next to one inside a conditional of the model: the
// link runs through a new port of the conditional, and goes with it.
TEST_F(ConnectionTest, ALinkIntoAConditionalRunsThroughItsPorts) {
    auto loop = std::make_shared<LattixBasic::LoopProcess>();
    model->AddOperator(loop);
    auto outside = AddStep(model, L"Outside");
    auto inside = AddStep(loop, L"Inside");
    auto nodeFor = [this](const std::shared_ptr<lx::Operator>& op) {
        auto node = std::make_shared<OperatorNode>();
        node->SetOperator(op);
        for (const auto& port : op->GetPorts()) {
            auto point = std::make_shared<PortDescriptionConnectionPoint>();
            point->SetThePort(port);
            if (port->IsOutput()) point->SetOutput();
            node->AddConnectionPoint(point);
        }
        canvas->AddNode(node);
        return node;
    };
    nodeFor(outside);
    nodeFor(inside);
    auto into = Connect(Point(outside, L"Out"), Point(inside, L"In"));
    auto raised = inside->GetPort(L"In")->GetAliasingPort();
    ASSERT_NE(raised, nullptr);
    EXPECT_EQ(raised->TryGetOperator(), loop);
    EXPECT_NE(loop->FindParentConnection(outside), nullptr);
    auto outOf = Connect(Point(inside, L"Out"), Point(outside, L"In"));
    EXPECT_NE(outside->FindParentConnection(loop), nullptr);
    const auto portsWithLinks = loop->GetPorts().size();

    EXPECT_TRUE(canvas->UserRemoveConnection(into));
    EXPECT_EQ(inside->GetPort(L"In")->GetAliasingPort(), nullptr);
    EXPECT_EQ(loop->FindParentConnection(outside), nullptr);
    EXPECT_EQ(loop->GetPorts().size(), portsWithLinks - 1);
    EXPECT_TRUE(canvas->UserRemoveConnection(outOf));
    EXPECT_EQ(outside->FindParentConnection(loop), nullptr);
    EXPECT_EQ(loop->GetPorts().size(), portsWithLinks - 2);
}

}  // namespace
