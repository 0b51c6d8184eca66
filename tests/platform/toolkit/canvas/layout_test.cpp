#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "canvastestkit.h"

using namespace canvastest;
using ZML::FlowGraphNodeEx;
using ZML::FlowGraphPart;

namespace {

// A chain of five nodes n0 -> n1 -> ... -> n4, all at the origin and added in scrambled order so
// that the layout cannot simply keep the order of addition.
std::vector<std::shared_ptr<Node>> Chain(FlowGraphPart& canvas, int orientation) {
    std::vector<std::shared_ptr<Node>> chain(5);
    for (int i : {3, 0, 4, 1, 2}) {
        chain[i] = AddNode(canvas, L"step " + std::to_wstring(i), 1, 1);
        chain[i]->SetOrientation(orientation);
    }
    for (int i = 0; i + 1 < 5; ++i) {
        Connect(canvas, Out(chain[i]), In(chain[i + 1]));
    }
    return chain;
}

}  // namespace

TEST(CanvasLayout, AChainOfFiveLandsInStrictlyIncreasingLayers) {
    struct Case {
        int orientation;
        const char* rankdir;
        // The coordinate that grows along the chain; +1 or -1.
        bool alongX;
        int sign;
    };
    const std::vector<Case> cases{
        {FlowGraphNodeEx::LeftToRight, "rankdir=LR", true, 1},
        {FlowGraphNodeEx::TopToBottom, "rankdir=TB", false, 1},
        {FlowGraphNodeEx::RightToLeft, "rankdir=RL", true, -1},
        {FlowGraphNodeEx::BottomToTop, "rankdir=BT", false, -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rankdir);
        FlowGraphPart canvas;
        const auto chain = Chain(canvas, c.orientation);
        std::vector<std::shared_ptr<FlowGraphNodeEx>> reported;
        auto token = canvas.OnNodeChanged([&](const auto& node) { reported.push_back(node); });
        EXPECT_NE(canvas.GetLayoutGraph().find(c.rankdir), std::string::npos);
        canvas.Layout();
        for (int i = 0; i + 1 < 5; ++i) {
            const auto here = chain[i]->GetBounds();
            const auto next = chain[i + 1]->GetBounds();
            if (c.alongX) {
                EXPECT_TRUE(c.sign > 0 ? next.x >= here.x + here.width
                                       : here.x >= next.x + next.width)
                    << "step " << i;
            } else {
                EXPECT_TRUE(c.sign > 0 ? next.y >= here.y + here.height
                                       : here.y >= next.y + next.height)
                    << "step " << i;
            }
        }
        const auto content = canvas.GetContentBounds();
        EXPECT_EQ(content.x, 20);
        EXPECT_EQ(content.y, 20);
        EXPECT_EQ(reported.size() + (chain[0]->GetLocation() == ZML::FlowGraphLocation{0, 0}), 5u)
            << "every moved node reaches the host";
    }
}

TEST(CanvasLayout, ACycleIsLaidOutWithoutOverlaps) {
    FlowGraphPart canvas;
    std::vector<std::shared_ptr<Node>> ring;
    for (int i = 0; i < 6; ++i) {
        ring.push_back(AddNode(canvas, L"ring " + std::to_wstring(i), 2, 1));
    }
    for (int i = 0; i < 6; ++i) {
        Connect(canvas, Out(ring[i]), In(ring[(i + 1) % 6]));
    }
    Connect(canvas, Out(ring[3]), In(ring[0], 1));
    auto text = std::make_shared<Node>();
    text->SetTextOnly(true);
    text->SetCaption(L"a note\non two lines");
    canvas.AddNode(text);
    canvas.Layout();
    std::set<std::pair<int, int>> places;
    const auto nodes = canvas.GetNodes();
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const auto box = nodes[i]->GetBounds();
        places.insert({box.x, box.y});
        for (std::size_t j = i + 1; j < nodes.size(); ++j) {
            const auto other = nodes[j]->GetBounds();
            const bool apart = box.x + box.width <= other.x || other.x + other.width <= box.x ||
                               box.y + box.height <= other.y || other.y + other.height <= box.y;
            EXPECT_TRUE(apart) << i << " overlaps " << j;
        }
    }
    EXPECT_EQ(places.size(), nodes.size());
}

TEST(CanvasLayout, ReadOnlyCanvasLaysOutWithoutTellingTheHostAndEmptyCanvasIsFine) {
    FlowGraphPart canvas;
    canvas.Layout();
    const auto chain = Chain(canvas, FlowGraphNodeEx::LeftToRight);
    canvas.SetReadonly(true);
    int reported = 0;
    auto token = canvas.OnNodeChanged([&](const auto&) { ++reported; });
    canvas.Layout();
    EXPECT_EQ(reported, 0);
    EXPECT_GT(chain[4]->GetLocation().x, chain[0]->GetLocation().x);
}

TEST(CanvasLayout, CanvasesOnSeveralThreadsAreLaidOutOneAtATime) {
    auto positions = [](int orientation) {
        FlowGraphPart canvas;
        const auto chain = Chain(canvas, orientation);
        canvas.Layout();
        std::vector<ZML::FlowGraphLocation> result;
        for (const auto& node : chain) {
            result.push_back(node->GetLocation());
        }
        return result;
    };
    const auto expected = positions(FlowGraphNodeEx::TopToBottom);
    std::vector<std::vector<ZML::FlowGraphLocation>> results(4);
    std::vector<std::thread> threads;
    for (auto& result : results) {
        threads.emplace_back([&result, &positions] {
            for (int i = 0; i < 5; ++i) {
                result = positions(FlowGraphNodeEx::TopToBottom);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (const auto& result : results) {
        EXPECT_EQ(result, expected);
    }
}
