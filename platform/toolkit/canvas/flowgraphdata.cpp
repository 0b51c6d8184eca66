#include <algorithm>

#include "canvas/flowgraphdata.h"

namespace ZML {

bool flowGraphPartData::AddConnection(const ConnectionPtr& connection) {
    auto& record = FlowGraphAccess::Connection(*connection);
    if (!connectionsByPair
             .emplace(std::make_pair(record.input.get(), record.output.get()), connection)
             .second) {
        return false;
    }
    record.order = connections.Append(connection);
    record.canvas = weak_from_this();
    record.owner = this;
    FlowGraphAccess::Point(*record.input).connections.push_back(connection.get());
    FlowGraphAccess::Point(*record.output).connections.push_back(connection.get());
    if (!changed.empty()) {
        Notify({FlowGraphChange::Kind::ConnectionAdded,
                connection->GetInputNode(),
                connection,
                {},
                0});
    }
    return true;
}

namespace {

void EraseFrom(FlowGraphConnectionPointEx& point, const FlowGraphConnectionEx* connection) {
    auto& list = FlowGraphAccess::Point(point).connections;
    list.erase(std::remove(list.begin(), list.end(), connection), list.end());
}

}  // namespace

bool flowGraphPartData::RemoveConnection(const ConnectionPtr& connection) {
    if (!connection) {
        return false;
    }
    auto& record = FlowGraphAccess::Connection(*connection);
    if (record.owner != this) {
        return false;
    }
    connections.Erase(record.order);
    EraseFrom(*record.input, connection.get());
    EraseFrom(*record.output, connection.get());
    connectionsByPair.erase(std::make_pair(record.input.get(), record.output.get()));
    record.canvas.reset();
    record.owner = nullptr;
    record.order = 0;
    if (!changed.empty()) {
        Notify({FlowGraphChange::Kind::ConnectionRemoved,
                connection->GetInputNode(),
                connection,
                {},
                0});
    }
    return true;
}

void flowGraphPartData::RemoveConnectionsOf(const PointPtr& point) {
    for (const auto& connection : ConnectionsAt(*point)) {
        RemoveConnection(connection);
    }
}

std::vector<flowGraphPartData::ConnectionPtr> flowGraphPartData::ConnectionsOf(
    const NodePtr& node) const {
    std::vector<ConnectionPtr> result;
    for (const auto& point : FlowGraphAccess::Node(*node).points) {
        for (auto* connection : FlowGraphAccess::Point(*point).connections) {
            result.push_back(connection->shared_from_this());
        }
    }
    std::sort(result.begin(), result.end(), [](const auto& a, const auto& b) {
        return FlowGraphAccess::Connection(*a).order < FlowGraphAccess::Connection(*b).order;
    });
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
}

std::vector<flowGraphPartData::ConnectionPtr> flowGraphPartData::ConnectionsAt(
    const FlowGraphConnectionPointEx& point) {
    const auto& list = FlowGraphAccess::Point(point).connections;
    std::vector<ConnectionPtr> result;
    result.reserve(list.size());
    for (auto* connection : list) {
        result.push_back(connection->shared_from_this());
    }
    return result;
}

void flowGraphPartData::Forget(const NodePtr& node) {
    auto& record = FlowGraphAccess::Node(*node);
    record.canvas.reset();
    record.owner = nullptr;
    record.order = 0;
    record.selected = false;
    for (const auto& point : record.points) {
        FlowGraphAccess::Point(*point).connections.clear();
    }
}

void flowGraphPartData::Forget(const ConnectionPtr& connection) {
    auto& record = FlowGraphAccess::Connection(*connection);
    record.canvas.reset();
    record.owner = nullptr;
    record.order = 0;
}

bool flowGraphPartData::Contains(const NodePtr& node) const {
    return node && FlowGraphAccess::Node(*node).owner == this;
}

bool flowGraphPartData::RemoveNode(const NodePtr& node) {
    if (!Contains(node)) {
        return false;
    }
    for (const auto& connection : ConnectionsOf(node)) {
        RemoveConnection(connection);
    }
    // A connection callback may have removed the node already.
    if (!Contains(node)) {
        return true;
    }
    auto& record = FlowGraphAccess::Node(*node);
    const bool wasSelected = record.selected;
    selection.erase(record.order);
    record.selected = false;
    if (auto clicked = clickedPoint.lock(); clicked && clicked->GetNode() == node) {
        clickedPoint.reset();
    }
    nodes.Erase(record.order);
    record.canvas.reset();
    record.owner = nullptr;
    record.order = 0;
    if (wasSelected) {
        Notify({FlowGraphChange::Kind::SelectionChanged, {}, {}, {}, 0});
    }
    Notify({FlowGraphChange::Kind::NodeRemoved, node, {}, {}, 0});
    return true;
}

}  // namespace ZML
