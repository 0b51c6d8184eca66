#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "canvastestkit.h"

using namespace canvastest;
using ZML::FlowGraphConnectCheck;
using ZML::FlowGraphConnectionEx;
using ZML::FlowGraphNodeEx;
using ZML::FlowGraphPart;

namespace {

// A canvas with two nodes a -> b and the host's callbacks recorded.
struct Host {
    std::shared_ptr<FlowGraphPart> canvas = std::make_shared<FlowGraphPart>("graph");
    std::shared_ptr<Node> a = AddNode(*canvas, L"a", 1, 1, 0, 0);
    std::shared_ptr<Node> b = AddNode(*canvas, L"b", 1, 1, 200, 0);
    std::vector<std::shared_ptr<FlowGraphConnectionEx>> added, removed;
    std::vector<std::shared_ptr<FlowGraphNodeEx>> changed, deleted;
    std::vector<FlowGraphPart::Token> tokens{
        canvas->OnConnectionAdded([this](const auto& c) { added.push_back(c); }),
        canvas->OnConnectionRemoved([this](const auto& c) { removed.push_back(c); }),
        canvas->OnNodeChanged([this](const auto& n) { changed.push_back(n); }),
        canvas->OnNodeRemoved([this](const auto& n) { deleted.push_back(n); }),
    };
};

struct ConnectCase {
    const char* name;
    std::function<void(Host&)> arrange;
    // The two ends of the drag.
    std::function<std::shared_ptr<ZML::FlowGraphConnectionPointEx>(Host&)> from, to;
    FlowGraphConnectCheck expected;
};

}  // namespace

TEST(CanvasGestures, ConnectGesturesAreCheckedBeforeAnythingChanges) {
    auto outA = [](Host& h) { return Out(h.a); };
    auto inB = [](Host& h) { return In(h.b); };
    const std::vector<ConnectCase> cases{
        {"output to input", {}, outA, inB, FlowGraphConnectCheck::Accepted},
        {"dragged from the input end", {}, inB, outA, FlowGraphConnectCheck::Accepted},
        {"receiving point refuses",
         [](Host& h) { std::static_pointer_cast<Point>(In(h.b))->refuseAll = true; }, outA, inB,
         FlowGraphConnectCheck::Refused},
        {"input already at its maximum",
         [](Host& h) {
             auto c = AddNode(*h.canvas, L"c", 0, 1);
             In(h.b)->SetMaxConnections(1);
             Connect(*h.canvas, Out(c), In(h.b));
         },
         outA, inB, FlowGraphConnectCheck::MaximumReached},
        {"output already at its maximum",
         [](Host& h) {
             auto c = AddNode(*h.canvas, L"c", 1, 0);
             Out(h.a)->SetMaxConnections(1);
             Connect(*h.canvas, Out(h.a), In(c));
         },
         outA, inB, FlowGraphConnectCheck::MaximumReached},
        {"read-only canvas", [](Host& h) { h.canvas->SetReadonly(true); }, outA, inB,
         FlowGraphConnectCheck::ReadOnly},
        {"same node", {}, outA, [](Host& h) { return In(h.a); }, FlowGraphConnectCheck::SameNode},
        {"two outputs",
         {},
         outA,
         [](Host& h) { return Out(h.b); },
         FlowGraphConnectCheck::SameDirection},
        {"already joined", [](Host& h) { Connect(*h.canvas, Out(h.a), In(h.b)); }, outA, inB,
         FlowGraphConnectCheck::AlreadyConnected},
        {"point off the canvas",
         {},
         outA,
         [](Host&) { return MakePoint(true); },
         FlowGraphConnectCheck::MissingPoint},
        {"null point",
         {},
         outA,
         [](Host&) { return nullptr; },
         FlowGraphConnectCheck::MissingPoint},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Host h;
        if (c.arrange) {
            c.arrange(h);
        }
        const auto before = h.canvas->GetConnectionCount();
        const auto from = c.from(h);
        const auto to = c.to(h);
        EXPECT_EQ(h.canvas->CheckConnect(from, to), c.expected);
        const auto made = h.canvas->UserConnect(from, to);
        if (c.expected == FlowGraphConnectCheck::Accepted) {
            ASSERT_TRUE(made);
            ASSERT_EQ(h.added.size(), 1u);
            EXPECT_EQ(h.added[0], made);
            EXPECT_EQ(made->GetOutputNode(), h.a);
            EXPECT_EQ(made->GetInputNode(), h.b);
            EXPECT_EQ(h.canvas->FindConnection(In(h.b), Out(h.a)), made);
            EXPECT_EQ(h.canvas->GetConnectionCount(), before + 1);
        } else {
            EXPECT_FALSE(made);
            EXPECT_TRUE(h.added.empty());
            EXPECT_EQ(h.canvas->GetConnectionCount(), before);
        }
    }
}

TEST(CanvasGestures, OnlyTheReceivingPointIsAsked) {
    Host h;
    auto sender = std::static_pointer_cast<Point>(Out(h.a));
    auto receiver = std::static_pointer_cast<Point>(In(h.b));
    sender->refuseAll = true;
    EXPECT_TRUE(h.canvas->UserConnect(receiver, sender));
    EXPECT_EQ(sender->asked, 0);
    EXPECT_GE(receiver->asked, 1);
}

TEST(CanvasGestures, DefaultCanConnectAcceptsOppositeDirectionOnAnotherNode) {
    Host h;
    auto loose = MakePoint(false);
    struct Case {
        const char* name;
        std::shared_ptr<ZML::FlowGraphConnectionPointEx> receiver, other;
        bool expected;
    };
    const std::vector<Case> cases{
        {"output of another node", In(h.b), Out(h.a), true},
        {"input of another node", In(h.b), In(h.a), false},
        {"own output", In(h.b), Out(h.b), false},
        {"point on no node", In(h.b), loose, false},
        {"null", In(h.b), nullptr, false},
        {"seen from the output side", Out(h.a), In(h.b), true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.receiver->ZML::FlowGraphConnectionPointEx::CanConnect(c.other), c.expected);
    }
}

TEST(CanvasGestures, DefaultPreDrawFallsBackToTheCaptionAsToolTip) {
    class Quiet : public ZML::FlowGraphConnectionPointEx {
    public:
        void PreDraw() override {}
    };
    struct Case {
        const char* name;
        std::shared_ptr<ZML::FlowGraphConnectionPointEx> point;
        std::wstring tooltip;
        std::wstring expected;
    };
    const std::vector<Case> cases{
        {"no tool tip", MakePoint(true, L"Body"), L"", L"Body"},
        {"own tool tip", MakePoint(true, L"Next"), L"The next step", L"The next step"},
        {"override doing nothing", std::make_shared<Quiet>(), L"", L""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        c.point->SetCaption(c.point->GetCaption().empty() ? L"Quiet" : c.point->GetCaption());
        c.point->SetTooltip(c.tooltip);
        c.point->PreDraw();
        EXPECT_EQ(c.point->GetTooltip(), c.expected);
    }
}

TEST(CanvasGestures, RemovingAConnectionReachesTheHost) {
    Host h;
    auto connection = Connect(*h.canvas, Out(h.a), In(h.b));
    h.canvas->SetReadonly(true);
    EXPECT_FALSE(h.canvas->UserRemoveConnection(connection));
    h.canvas->SetReadonly(false);
    ASSERT_TRUE(h.canvas->UserRemoveConnection(connection));
    ASSERT_EQ(h.removed.size(), 1u);
    EXPECT_EQ(h.removed[0], connection);
    EXPECT_FALSE(h.canvas->FindConnection(In(h.b), Out(h.a)));
    EXPECT_EQ(In(h.b)->GetConnectionCount(), 0u);
    EXPECT_FALSE(h.canvas->UserRemoveConnection(connection)) << "a second removal finds nothing";
    EXPECT_EQ(h.removed.size(), 1u);
}

TEST(CanvasGestures, DeletingTheSelectionReportsConnectionsWhileTheirNodesStand) {
    Host h;
    auto c = AddNode(*h.canvas, L"c", 1, 1, 400, 0);
    Connect(*h.canvas, Out(h.a), In(h.b));
    Connect(*h.canvas, Out(h.b), In(c));
    std::vector<bool> bothOnCanvas;
    auto watch = h.canvas->OnConnectionRemoved([&](const auto& connection) {
        bothOnCanvas.push_back(connection->GetInputNode()->IsOnCanvas() &&
                               connection->GetOutputNode()->IsOnCanvas());
    });
    h.canvas->AddNodeToSelection(h.b);
    h.canvas->SetReadonly(true);
    EXPECT_FALSE(h.canvas->UserDeleteSelection());
    EXPECT_EQ(h.canvas->GetNodeCount(), 3u);
    h.canvas->SetReadonly(false);
    ASSERT_TRUE(h.canvas->UserDeleteSelection());
    EXPECT_EQ(h.removed.size(), 2u);
    EXPECT_EQ(bothOnCanvas, (std::vector<bool>{true, true}));
    EXPECT_EQ(h.deleted, (std::vector<std::shared_ptr<FlowGraphNodeEx>>{h.b}));
    EXPECT_EQ(h.canvas->GetNodes(), (std::vector<std::shared_ptr<FlowGraphNodeEx>>{h.a, c}));
    EXPECT_EQ(h.canvas->GetConnectionCount(), 0u);
    EXPECT_TRUE(h.canvas->GetSelectedNodes().empty());
    EXPECT_FALSE(h.canvas->UserDeleteSelection()) << "nothing selected";
}

TEST(CanvasGestures, MovingNodesReachesTheHost) {
    Host h;
    auto stray = std::make_shared<Node>();
    ASSERT_TRUE(h.canvas->UserMoveNodes({h.a, stray, h.a}, 10, -5));
    EXPECT_EQ(h.a->GetLocation(), (ZML::FlowGraphLocation{10, -5}));
    EXPECT_EQ(h.changed, (std::vector<std::shared_ptr<FlowGraphNodeEx>>{h.a}));
    EXPECT_EQ(stray->GetLocation(), (ZML::FlowGraphLocation{0, 0}));

    h.canvas->AddNodeToSelection(h.b);
    ASSERT_TRUE(h.canvas->UserMoveSelection(1, 1));
    EXPECT_EQ(h.b->GetLocation(), (ZML::FlowGraphLocation{201, 1}));

    h.canvas->SetReadonly(true);
    EXPECT_FALSE(h.canvas->UserMoveNodes({h.a}, 10, 10));
    EXPECT_EQ(h.a->GetLocation(), (ZML::FlowGraphLocation{10, -5}));
    EXPECT_EQ(h.changed.size(), 2u);
}

TEST(CanvasGestures, ADragReachesTheHostOnceWhenItEnds) {
    Host h;
    int geometryNotices = 0;
    auto watch = h.canvas->OnChange([&](const ZML::FlowGraphChange& change) {
        geometryNotices += change.kind == ZML::FlowGraphChange::Kind::NodeChanged &&
                           (change.aspects & ZML::FlowGraphChange::Geometry);
    });
    for (int step = 0; step < 5; ++step) {
        ASSERT_TRUE(h.canvas->UserDragNodes({h.a, h.b}, 2, 1));
    }
    EXPECT_EQ(geometryNotices, 10) << "the view follows every step";
    EXPECT_TRUE(h.changed.empty()) << "the host waits for the drop";
    h.b->Remove();
    h.canvas->UserFinishDrag();
    EXPECT_EQ(h.changed, (std::vector<std::shared_ptr<FlowGraphNodeEx>>{h.a}));
    EXPECT_EQ(h.a->GetLocation(), (ZML::FlowGraphLocation{10, 5}));
    h.canvas->UserFinishDrag();
    EXPECT_EQ(h.changed.size(), 1u) << "a finished drag is not reported twice";
    h.canvas->SetReadonly(true);
    EXPECT_FALSE(h.canvas->UserDragNodes({h.a}, 1, 1));
}

TEST(CanvasGestures, ProgrammaticChangesDoNotReachTheHost) {
    Host h;
    auto connection = Connect(*h.canvas, Out(h.a), In(h.b));
    h.a->SetLocation(50, 50);
    h.canvas->RemoveConnection(connection);
    h.b->Remove();
    EXPECT_TRUE(h.added.empty());
    EXPECT_TRUE(h.removed.empty());
    EXPECT_TRUE(h.changed.empty());
    EXPECT_TRUE(h.deleted.empty());
}

TEST(CanvasGestures, SelectionByClickToggleAndRubberBand) {
    Host h;
    auto c = AddNode(*h.canvas, L"c", 0, 0, 0, 300);
    int notices = 0;
    auto watch = h.canvas->OnChange([&](const ZML::FlowGraphChange& change) {
        notices += change.kind == ZML::FlowGraphChange::Kind::SelectionChanged;
    });
    using Nodes = std::vector<std::shared_ptr<FlowGraphNodeEx>>;
    const auto abox = h.a->GetBounds();
    const auto bbox = h.b->GetBounds();
    struct Step {
        const char* name;
        std::function<void()> act;
        Nodes expected;
    };
    const std::vector<Step> steps{
        {"click", [&] { h.canvas->UserClickNode(h.b, false); }, {h.b}},
        {"click another", [&] { h.canvas->UserClickNode(c, false); }, {c}},
        {"extend", [&] { h.canvas->UserClickNode(h.a, true); }, {h.a, c}},
        {"extend again toggles", [&] { h.canvas->UserClickNode(c, true); }, {h.a}},
        {"click on empty canvas", [&] { h.canvas->UserClickNode(nullptr, false); }, {}},
        {"band around a and b",
         [&] {
             h.canvas->UserSelectRect({-5, -5, bbox.x + bbox.width + 10, 100}, false);
         },
         {h.a, h.b}},
        {"band cutting through a selects nothing",
         [&] {
             h.canvas->UserSelectRect({abox.x + 5, -5, 20, 100}, false);
         },
         {}},
        {"band drawn backwards, extending",
         [&] {
             h.canvas->UserSelectRect(
                 {c->GetBounds().width + 5, 400, -20 - c->GetBounds().width, -110}, true);
         },
         {c}},
        {"programmatic add", [&] { h.canvas->AddNodeToSelection(h.a); }, {h.a, c}},
        {"clear", [&] { h.canvas->ClearSelection(); }, {}},
    };
    int expectedNotices = 0;
    Nodes previous;
    for (const auto& step : steps) {
        SCOPED_TRACE(step.name);
        step.act();
        EXPECT_EQ(h.canvas->GetSelectedNodes(), step.expected);
        for (const auto& node : h.canvas->GetNodes()) {
            EXPECT_EQ(node->IsSelected(), std::find(step.expected.begin(), step.expected.end(),
                                                    node) != step.expected.end());
        }
        expectedNotices += step.expected != previous;
        previous = step.expected;
        EXPECT_EQ(notices, expectedNotices);
    }
    EXPECT_THROW(h.canvas->AddNodeToSelection(std::make_shared<Node>()), QuarnLog::Exception);
}

TEST(CanvasGestures, MouseDownRecordsTheClickedPointAndFiresTheEvent) {
    Host h;
    std::vector<ZML::Event> events;
    h.canvas->OnMessage("mousedown", [&](const ZML::Event& e) { events.push_back(e); });
    const auto target = In(h.b);
    const auto at = h.b->GetPointPosition(target);

    ZML::Event press;
    press.name = "mousedown";
    press.x = at.x + 2;
    press.y = at.y - 1;
    h.canvas->UserMouse(press);
    EXPECT_EQ(h.canvas->GetClickedPoint(), target);
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].key, FlowGraphPart::MouseDown);
    const auto hit = std::any_cast<ZML::FlowGraphHit>(events[0].detail);
    EXPECT_EQ(hit.point, target);
    EXPECT_EQ(hit.node, h.b);

    press.x = 1000;
    h.canvas->UserMouse(press);
    EXPECT_FALSE(h.canvas->GetClickedPoint()) << "a press elsewhere forgets the point";

    h.canvas->UserClickPoint(target);
    EXPECT_EQ(h.canvas->GetClickedPoint(), target);
    h.b->RemoveConnectionPoint(target);
    EXPECT_FALSE(h.canvas->GetClickedPoint()) << "a removed point is no longer the clicked one";

    press.name = "wheel";
    EXPECT_THROW(h.canvas->UserMouse(press), QuarnLog::Exception);
}
