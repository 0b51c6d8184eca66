#pragma once

// Node and point classes for canvas tests: the canvas classes only have protected constructors,
// the way the library derives its own.

#include <memory>
#include <string>

#include "QuarnLog/Exception.h"
#include "ZML/FlowGraphPart.h"

namespace canvastest {

class Node : public ZML::FlowGraphNodeEx {
public:
    Node() = default;
};

// A point whose CanConnect answer can be forced, and which counts how often it was asked.
class Point : public ZML::FlowGraphConnectionPointEx {
public:
    Point() = default;
    bool CanConnect(const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& other) override {
        ++asked;
        return refuseAll ? false : FlowGraphConnectionPointEx::CanConnect(other);
    }
    bool refuseAll = false;
    int asked = 0;
};

inline std::shared_ptr<Point> MakePoint(bool input, const std::wstring& caption = L"p") {
    auto point = std::make_shared<Point>();
    input ? point->SetInput() : point->SetOutput();
    point->SetCaption(caption);
    return point;
}

// A node with `inputs` input points and `outputs` output points, at (x, y), put on `canvas`.
inline std::shared_ptr<Node> AddNode(ZML::FlowGraphPart& canvas, const std::wstring& caption,
                                     int inputs = 1, int outputs = 1, int x = 0, int y = 0) {
    auto node = std::make_shared<Node>();
    node->SetCaption(caption);
    node->SetLocation(x, y);
    for (int i = 0; i < inputs; ++i) {
        node->AddConnectionPoint(MakePoint(true, L"in" + std::to_wstring(i)));
    }
    for (int i = 0; i < outputs; ++i) {
        node->AddConnectionPoint(MakePoint(false, L"out" + std::to_wstring(i)));
    }
    canvas.AddNode(node);
    return node;
}

inline std::shared_ptr<ZML::FlowGraphConnectionPointEx> In(const std::shared_ptr<Node>& node,
                                                           std::size_t i = 0) {
    std::size_t seen = 0;
    for (const auto& point : node->GetFlowConnectionPoints()) {
        if (point->IsInput() && seen++ == i) {
            return point;
        }
    }
    return nullptr;
}

inline std::shared_ptr<ZML::FlowGraphConnectionPointEx> Out(const std::shared_ptr<Node>& node,
                                                            std::size_t i = 0) {
    std::size_t seen = 0;
    for (const auto& point : node->GetFlowConnectionPoints()) {
        if (point->IsOutput() && seen++ == i) {
            return point;
        }
    }
    return nullptr;
}

// Adds the connection out -> in programmatically.
inline std::shared_ptr<ZML::FlowGraphConnectionEx> Connect(
    ZML::FlowGraphPart& canvas, const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& out,
    const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& in) {
    auto connection = std::make_shared<ZML::FlowGraphConnectionEx>();
    connection->SetOutputPoint(out);
    connection->SetInputPoint(in);
    canvas.AddConnection(connection);
    return connection;
}

}  // namespace canvastest
