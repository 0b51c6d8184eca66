#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <random>
#include <set>

#include "ZML/Frame.h"
#include "ZML/Icon.h"
#include "ZML/Script.h"
#include "canvastestkit.h"

using namespace canvastest;
using ZML::FlowGraphChange;
using ZML::FlowGraphConnectionEx;
using ZML::FlowGraphNodeEx;
using ZML::FlowGraphPart;

TEST(CanvasModel, NodesKeepTheOrderAddedAndTheCanvasKeepsThePointers) {
    FlowGraphPart canvas;
    std::vector<std::shared_ptr<FlowGraphNodeEx>> expected;
    for (int i = 0; i < 5; ++i) {
        expected.push_back(AddNode(canvas, L"n" + std::to_wstring(i)));
    }
    expected[2]->Remove();
    expected.erase(expected.begin() + 2);
    expected.push_back(AddNode(canvas, L"last"));
    EXPECT_EQ(canvas.GetNodes(), expected);
    EXPECT_THROW(canvas.AddNode(expected[0]), QuarnLog::Exception) << "already on a canvas";
    EXPECT_THROW(canvas.AddNode(nullptr), QuarnLog::Exception);

    std::weak_ptr<FlowGraphNodeEx> kept;
    {
        auto node = std::make_shared<Node>();
        canvas.AddNode(node);
        kept = node;
    }
    EXPECT_FALSE(kept.expired()) << "the canvas shares ownership";
    canvas.RemoveAllNodes();
    EXPECT_TRUE(kept.expired());
    EXPECT_EQ(canvas.GetNodeCount(), 0u);
}

TEST(CanvasModel, PointListOperations) {
    FlowGraphPart canvas;
    auto node = AddNode(canvas, L"n", 1, 1);
    auto other = AddNode(canvas, L"other", 1, 1);
    auto next = MakePoint(false, L"Next");
    auto previous = MakePoint(true, L"Previous");
    node->AddConnectionPointAt(0, previous);
    node->AddConnectionPointAt(0, next);
    auto points = node->GetFlowConnectionPoints();
    ASSERT_EQ(points.size(), 4u);
    EXPECT_EQ(points[0], next);
    EXPECT_EQ(points[1], previous);
    EXPECT_EQ(next->GetNode(), node);

    struct Case {
        const char* name;
        std::function<void()> act;
    };
    const std::vector<Case> refused{
        {"null point", [&] { node->AddConnectionPoint(nullptr); }},
        {"point of another node", [&] { node->AddConnectionPoint(In(other)); }},
        {"index past the end", [&] { node->AddConnectionPointAt(9, MakePoint(true)); }},
        {"negative maximum", [&] { next->SetMaxConnections(-1); }},
        {"unknown state", [&] { node->SetState(7); }},
        {"unknown orientation", [&] { node->SetOrientation(4); }},
        {"reversed progress bounds", [&] { node->SetProgressBounds(5, 1); }},
    };
    for (const auto& c : refused) {
        SCOPED_TRACE(c.name);
        EXPECT_THROW(c.act(), QuarnLog::Exception);
    }
    EXPECT_EQ(node->GetConnectionPointCount(), 4u);

    auto link = Connect(canvas, next, In(other));
    EXPECT_THROW(next->SetInput(), QuarnLog::Exception) << "a connected point keeps its direction";
    EXPECT_TRUE(node->RemoveConnectionPoint(next));
    EXPECT_FALSE(link->IsOnCanvas()) << "its connections go with the point";
    EXPECT_EQ(In(other)->GetConnectionCount(), 0u);
    EXPECT_FALSE(next->GetNode());
    EXPECT_FALSE(node->RemoveConnectionPoint(next));
    other->AddConnectionPoint(next);
    EXPECT_EQ(next->GetNode(), other) << "a removed point may join another node";
}

TEST(CanvasModel, AddConnectionRefusesWhatCannotBeDrawn) {
    FlowGraphPart canvas;
    auto a = AddNode(canvas, L"a");
    auto b = AddNode(canvas, L"b");
    Connect(canvas, Out(a), In(b));
    auto stray = std::make_shared<Node>();
    stray->AddConnectionPoint(MakePoint(true));
    struct Case {
        const char* name;
        std::shared_ptr<ZML::FlowGraphConnectionPointEx> out, in;
    };
    const std::vector<Case> cases{
        {"no input point", Out(a), nullptr},
        {"no output point", nullptr, In(b)},
        {"ends at an output", Out(a), Out(b)},
        {"starts at an input", In(a), In(b)},
        {"point off the canvas", Out(a), In(stray)},
        {"point on no node", Out(a), MakePoint(true)},
        {"duplicate", Out(a), In(b)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_THROW(Connect(canvas, c.out, c.in), QuarnLog::Exception);
        EXPECT_EQ(canvas.GetConnectionCount(), 1u);
    }
    EXPECT_THROW(canvas.AddConnection(nullptr), QuarnLog::Exception);
    auto onCanvas = canvas.GetConnections().front();
    EXPECT_THROW(canvas.AddConnection(onCanvas), QuarnLog::Exception);
    EXPECT_THROW(onCanvas->SetInputPoint(In(a)), QuarnLog::Exception);
}

// The indexed lookups agree with a plain walk over every connection, through a random mix of
// additions and removals of connections, points and nodes.
TEST(CanvasModel, IndexedLookupsStayCorrectAfterRemovals) {
    FlowGraphPart canvas;
    std::mt19937 random(7);
    std::vector<std::shared_ptr<Node>> nodes;
    for (int i = 0; i < 40; ++i) {
        nodes.push_back(AddNode(canvas, L"n" + std::to_wstring(i), 3, 2));
    }
    auto pick = [&](std::size_t n) {
        return std::uniform_int_distribution<std::size_t>(0, n - 1)(random);
    };
    for (int round = 0; round < 400; ++round) {
        auto live = canvas.GetNodes();
        auto from = std::static_pointer_cast<Node>(live[pick(live.size())]);
        auto to = std::static_pointer_cast<Node>(live[pick(live.size())]);
        switch (pick(10)) {
            case 0:
                from->Remove();
                break;
            case 1: {
                auto points = from->GetFlowConnectionPoints();
                if (!points.empty()) {
                    from->RemoveConnectionPoint(points[pick(points.size())]);
                }
                break;
            }
            case 2: {
                auto all = canvas.GetConnections();
                if (!all.empty()) {
                    canvas.RemoveConnection(all[pick(all.size())]);
                }
                break;
            }
            default: {
                auto out = Out(from, pick(2));
                auto in = In(to, pick(3));
                if (out && in && !canvas.FindConnection(in, out)) {
                    Connect(canvas, out, in);
                }
            }
        }
        if (canvas.GetNodeCount() < 10) {
            for (int i = 0; i < 10; ++i) {
                AddNode(canvas, L"fresh", 3, 2);
            }
        }
    }
    std::map<const ZML::FlowGraphConnectionPointEx*, std::set<FlowGraphConnectionEx*>> byPoint;
    for (const auto& connection : canvas.GetConnections()) {
        EXPECT_TRUE(connection->GetInputNode()->IsOnCanvas());
        EXPECT_TRUE(connection->GetOutputNode()->IsOnCanvas());
        EXPECT_EQ(canvas.FindConnection(connection->GetInputPoint(), connection->GetOutputPoint()),
                  connection);
        byPoint[connection->GetInputPoint().get()].insert(connection.get());
        byPoint[connection->GetOutputPoint().get()].insert(connection.get());
    }
    for (const auto& node : canvas.GetNodes()) {
        for (const auto& point : node->GetFlowConnectionPoints()) {
            std::set<FlowGraphConnectionEx*> indexed;
            for (const auto& c : canvas.GetConnections(point)) {
                indexed.insert(c.get());
            }
            EXPECT_EQ(indexed, byPoint[point.get()]);
            EXPECT_EQ(point->GetConnectionCount(), byPoint[point.get()].size());
            EXPECT_EQ(point->GetNode(), node);
        }
    }
    EXPECT_GT(canvas.GetConnectionCount(), 0u);
}

TEST(CanvasModel, ObserversSeeEveryChangeInOrder) {
    FlowGraphPart canvas;
    std::vector<std::string> seen;
    auto token = canvas.OnChange([&](const FlowGraphChange& change) {
        static const char* const names[] = {"node+", "node-",   "node~",     "link+",   "link-",
                                            "link~", "cleared", "selection", "display", "options"};
        std::string entry = names[static_cast<int>(change.kind)];
        if (change.kind == FlowGraphChange::Kind::NodeChanged) {
            entry += std::to_string(change.aspects) + (change.point ? "p" : "");
        }
        seen.push_back(entry);
    });
    auto a = AddNode(canvas, L"a");
    auto b = AddNode(canvas, L"b");
    auto link = Connect(canvas, Out(a), In(b));
    a->SetCaption(L"renamed");
    a->SetCaption(L"renamed");  // no change, no notice
    a->SetLocation(5, 5);
    a->SetState(FlowGraphNodeEx::Error);
    Out(a)->SetColor(0x0000FF);
    link->SetColor(0x6464FF);
    canvas.AddNodeToSelection(b);
    b->Remove();
    canvas.SetReadonly(true);
    canvas.ZoomToFit();
    canvas.RemoveAllNodes();
    const std::vector<std::string> expected{
        "node+",     "node+", "link+",     "node~3", "node~2",  "node~8",  "node~4p", "link~",
        "selection", "link-", "selection", "node-",  "options", "display", "cleared"};
    EXPECT_EQ(seen, expected);

    token.reset();
    AddNode(canvas, L"unobserved");
    EXPECT_EQ(seen.size(), expected.size()) << "dropping the token unregisters";
}

TEST(CanvasModel, PointsSitOnTheEdgesTheOrientationNames) {
    FlowGraphPart canvas;
    auto node = AddNode(canvas, L"node", 2, 1, 100, 50);
    struct Case {
        int orientation;
        std::function<bool(const ZML::FlowGraphRect&, ZML::FlowGraphLocation)> onInputEdge,
            onOutputEdge;
    };
    const std::vector<Case> cases{
        {FlowGraphNodeEx::LeftToRight, [](auto r, auto p) { return p.x == r.x; },
         [](auto r, auto p) { return p.x == r.x + r.width; }},
        {FlowGraphNodeEx::RightToLeft, [](auto r, auto p) { return p.x == r.x + r.width; },
         [](auto r, auto p) { return p.x == r.x; }},
        {FlowGraphNodeEx::TopToBottom, [](auto r, auto p) { return p.y == r.y; },
         [](auto r, auto p) { return p.y == r.y + r.height; }},
        {FlowGraphNodeEx::BottomToTop, [](auto r, auto p) { return p.y == r.y + r.height; },
         [](auto r, auto p) { return p.y == r.y; }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.orientation);
        node->SetOrientation(c.orientation);
        const auto box = node->GetBounds();
        EXPECT_EQ(box.x, 100);
        EXPECT_EQ(box.y, 50);
        for (const auto& point : node->GetFlowConnectionPoints()) {
            const auto at = node->GetPointPosition(point);
            EXPECT_TRUE(point->IsInput() ? c.onInputEdge(box, at) : c.onOutputEdge(box, at));
            EXPECT_EQ(canvas.PointAt(at.x + 3, at.y - 3), point);
            EXPECT_EQ(canvas.HitTest(at.x, at.y).node, node);
        }
        EXPECT_NE(node->GetPointPosition(In(node, 0)), node->GetPointPosition(In(node, 1)));
        EXPECT_EQ(canvas.NodeAt(box.x + box.width / 2, box.y + box.height / 2), node);
        EXPECT_FALSE(canvas.NodeAt(box.x - 1, box.y));
        EXPECT_FALSE(canvas.PointAt(box.x + box.width / 2, box.y + box.height / 2));
    }
}

TEST(CanvasModel, ZoomToFitsTheNodesIntoTheView) {
    FlowGraphPart canvas;
    canvas.SetViewSize(400, 300);
    AddNode(canvas, L"a", 1, 1, 0, 0);
    auto far = AddNode(canvas, L"b", 1, 1, 1600, 900);
    canvas.ZoomToFit();
    const auto info = canvas.GetFlowGraphDisplayInfo();
    const auto content = canvas.GetContentBounds();
    auto toView = [&](double x, double y) {
        return std::make_pair((x - info.scrollX) * info.scale, (y - info.scrollY) * info.scale);
    };
    const auto [left, top] = toView(content.x, content.y);
    const auto [right, bottom] = toView(content.x + content.width, content.y + content.height);
    EXPECT_GE(left, 0);
    EXPECT_GE(top, 0);
    EXPECT_LE(right, 400);
    EXPECT_LE(bottom, 300);
    canvas.ZoomTo({far});
    EXPECT_DOUBLE_EQ(canvas.GetFlowGraphDisplayInfo().scale, 1.0)
        << "a single node is not enlarged";
    EXPECT_THROW(canvas.SetFlowGraphDisplayInfo({0.0, 0, 0}), QuarnLog::Exception);

    FlowGraphPart sized;
    sized.GeometrySet(0, 0, 3000, 2000);
    AddNode(sized, L"a", 1, 1, 0, 0);
    AddNode(sized, L"b", 1, 1, 2400, 1600);
    sized.ZoomToFit();
    EXPECT_GT(sized.GetFlowGraphDisplayInfo().scale, 0.9) << "the part's own size is the view";
}

TEST(CanvasModel, NodesAndConnectionsOutliveTheirCanvasCleanly) {
    std::shared_ptr<Node> a, b;
    std::shared_ptr<FlowGraphConnectionEx> link;
    {
        FlowGraphPart canvas;
        a = AddNode(canvas, L"a");
        b = AddNode(canvas, L"b");
        link = Connect(canvas, Out(a), In(b));
    }
    EXPECT_FALSE(a->IsOnCanvas());
    EXPECT_FALSE(link->IsOnCanvas());
    EXPECT_EQ(Out(a)->GetConnectionCount(), 0u);
    a->Remove();
    a->SetCaption(L"still usable");
    FlowGraphPart second;
    second.AddNode(a);
    EXPECT_TRUE(a->IsOnCanvas());
}

TEST(CanvasModel, OrderSelectionAndHitsSurviveManyRemovals) {
    FlowGraphPart canvas;
    std::vector<std::shared_ptr<FlowGraphNodeEx>> kept;
    for (int i = 0; i < 200; ++i) {
        auto node = AddNode(canvas, L"n" + std::to_wstring(i), 1, 1, 0, 0);
        if (i % 5 == 0) {
            kept.push_back(node);
            canvas.AddNodeToSelection(node);
        } else if (i % 5 == 1) {
            canvas.AddNodeToSelection(node);
        }
    }
    for (const auto& node : canvas.GetNodes()) {
        if (std::find(kept.begin(), kept.end(), node) == kept.end()) {
            node->Remove();
        }
    }
    EXPECT_EQ(canvas.GetNodes(), kept);
    EXPECT_EQ(canvas.GetSelectedNodes(), kept);
    EXPECT_EQ(canvas.NodeAt(1, 1), kept.back()) << "the last added is on top";
    auto fresh = AddNode(canvas, L"fresh");
    kept.back()->Remove();
    EXPECT_EQ(canvas.NodeAt(1, 1), fresh);
    EXPECT_EQ(canvas.GetNodeCount(), kept.size());
}

TEST(CanvasModel, IconsByNameOrObjectAndTheRoomTheyTake) {
    FlowGraphPart canvas;
    auto node = AddNode(canvas, L"a caption long enough to set the width", 0, 0);
    const int plain = node->GetBounds().width;
    node->SetIcon(L"gear.ico");
    EXPECT_EQ(node->GetIcon(), L"gear.ico");
    EXPECT_GT(node->GetBounds().width, plain);
    auto found = std::make_shared<ZML::Icon>(L"gear.ico", L"/icons/gear.svg");
    node->SetIcon(found);
    EXPECT_EQ(node->GetIcon(), L"/icons/gear.svg");
    EXPECT_EQ(node->GetIconObject(), found);
    node->SetIcon(std::make_shared<ZML::Icon>(L"missing.ico", L""));
    EXPECT_EQ(node->GetIcon(), L"missing.ico") << "a placeholder keeps the name asked for";
    node->SetIcon(L"");
    EXPECT_FALSE(node->GetIconObject());
    EXPECT_EQ(node->GetBounds().width, plain);
}

TEST(CanvasModel, DialogScriptsDeclareCanvases) {
    const auto document = ZML::ParseScript(
        "frame \"editor\" {\n  flowgraph \"graph\" { geometry 0 0 640 480; info \"Model\"; }\n}\n",
        "editor.zml");
    auto frame = std::make_shared<ZML::Frame>("editor");
    ZML::BuildFrame(*frame, document.declarations.at(0), "editor.zml");
    auto canvas = frame->Find<FlowGraphPart>("graph");
    EXPECT_EQ(canvas->Kind(), "flowgraph");
    EXPECT_EQ(canvas->Geometry().width, 640);
    EXPECT_EQ(canvas->Info(), L"Model");
}
