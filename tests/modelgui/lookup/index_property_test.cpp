// The indexed lookups against the plain walk they replace, over random canvas histories: nodes
// added, removed and re-added, canvases cleared, operators dropped, nodes bound on the canvas, and
// changes made by another observer from inside a change report.

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortNode.h"

namespace {

using namespace quarn::modelgui;
using Velmar::Lattix::Operator;
using Velmar::Lattix::Port;
using Velmar::Lattix::PortDirection;

std::shared_ptr<OperatorNode> WalkForOperator(const ZML::FlowGraphPart& canvas,
                                              const std::shared_ptr<Operator>& op) {
    for (const auto& node : canvas.GetNodes()) {
        const auto opNode = std::dynamic_pointer_cast<OperatorNode>(node);
        if (!opNode) continue;
        const auto bound = opNode->GetOperator();
        if (bound && bound == op) return opNode;
    }
    return nullptr;
}

std::shared_ptr<PortNode> WalkForPort(const ZML::FlowGraphPart& canvas,
                                      const std::shared_ptr<Port>& port) {
    for (const auto& node : canvas.GetNodes()) {
        const auto portNode = std::dynamic_pointer_cast<PortNode>(node);
        if (!portNode) continue;
        const auto bound = portNode->GetPort();
        if (bound && bound == port) return portNode;
    }
    return nullptr;
}

TEST(LookupIndex, AnswersWhatTheWalkAnswers) {
    std::mt19937 random(20261121);
    for (int round = 0; round < 20; ++round) {
        auto canvas = std::make_shared<ZML::FlowGraphPart>();
        std::vector<std::shared_ptr<Operator>> operators;
        std::vector<std::shared_ptr<Port>> ports;
        for (int i = 0; i < 6; ++i) operators.push_back(std::make_shared<Operator>());
        for (int i = 0; i < 3; ++i) ports.push_back(Port::Create(L"p", PortDirection::Input));
        std::vector<std::shared_ptr<ZML::FlowGraphNodeEx>> nodes;  // every node made so far

        // Another observer that sometimes adds a node while the canvas reports one.
        std::shared_ptr<ZML::FlowGraphNodeEx> pendingInner;
        auto token = canvas->OnChange([&](const ZML::FlowGraphChange& change) {
            if (change.kind == ZML::FlowGraphChange::Kind::NodeAdded && pendingInner) {
                auto inner = std::move(pendingInner);
                pendingInner = nullptr;
                canvas->AddNode(inner);
            }
        });

        auto pick = [&random](std::size_t size) {
            return std::uniform_int_distribution<std::size_t>(0, size - 1)(random);
        };
        auto makeNode = [&]() -> std::shared_ptr<ZML::FlowGraphNodeEx> {
            if (pick(4) == 0) {
                auto node = std::make_shared<PortNode>();
                node->SetThePort(ports[pick(ports.size())]);
                return node;
            }
            auto node = std::make_shared<OperatorNode>();
            if (pick(8) != 0) node->SetOperator(operators[pick(operators.size())]);
            return node;
        };

        for (int step = 0; step < 200; ++step) {
            switch (pick(10)) {
                case 0:
                case 1:
                case 2: {
                    auto node = makeNode();
                    nodes.push_back(node);
                    if (pick(5) == 0) {
                        pendingInner = makeNode();
                        nodes.push_back(pendingInner);
                    }
                    canvas->AddNode(node);
                    break;
                }
                case 3:
                case 4:
                    if (!nodes.empty()) canvas->RemoveNode(nodes[pick(nodes.size())]);
                    break;
                case 5:
                    if (!nodes.empty()) {
                        const auto& node = nodes[pick(nodes.size())];
                        if (!node->IsOnCanvas()) canvas->AddNode(node);
                    }
                    break;
                case 6:
                    if (pick(10) == 0) canvas->RemoveAllNodes();
                    break;
                case 7:  // the model drops an operator; a new one takes its place in the pool
                    operators[pick(operators.size())] = std::make_shared<Operator>();
                    break;
                case 8:  // a node on the canvas is bound (again)
                    if (!nodes.empty()) {
                        if (auto opNode = std::dynamic_pointer_cast<OperatorNode>(
                                nodes[pick(nodes.size())])) {
                            opNode->SetOperator(operators[pick(operators.size())]);
                        }
                    }
                    break;
                default:
                    if (!nodes.empty()) nodes[pick(nodes.size())]->Remove();
                    break;
            }
            for (const auto& op : operators) {
                ASSERT_EQ(GUIUtils::FindOperatorNode(canvas, op), WalkForOperator(*canvas, op))
                    << "round " << round << ", step " << step;
            }
            for (const auto& port : ports) {
                ASSERT_EQ(GUIUtils::FindPortNode(canvas, port), WalkForPort(*canvas, port))
                    << "round " << round << ", step " << step;
            }
        }
        canvas->RemoveAllNodes();
    }
}

}  // namespace
