#include <algorithm>

#include "canvas/flowgraphdata.h"

namespace ZML {

void flowGraphPartData::AddConnection(const ConnectionPtr& connection) {
    auto& record = FlowGraphAccess::Connection(*connection);
    record.order = nextConnectionOrder++;
    record.canvas = weak_from_this();
    connections.emplace(record.order, connection);
    connectionsByPoint[record.input.get()].push_back(connection);
    connectionsByPoint[record.output.get()].push_back(connection);
    connectionsByPair.emplace(std::make_pair(record.input.get(), record.output.get()), connection);
    ++FlowGraphAccess::Point(*record.input).connectionCount;
    ++FlowGraphAccess::Point(*record.output).connectionCount;
    Notify({FlowGraphChange::Kind::ConnectionAdded, connection->GetInputNode(), connection, {}, 0});
}

namespace {

void EraseFrom(std::unordered_map<flowGraphPartData::PointKey,
                                  std::vector<flowGraphPartData::ConnectionPtr>>& index,
               flowGraphPartData::PointKey point, const flowGraphPartData::ConnectionPtr& item) {
    auto found = index.find(point);
    if (found == index.end()) {
        return;
    }
    auto& list = found->second;
    list.erase(std::remove(list.begin(), list.end(), item), list.end());
    if (list.empty()) {
        index.erase(found);
    }
}

}  // namespace

bool flowGraphPartData::RemoveConnection(const ConnectionPtr& connection) {
    if (!connection) {
        return false;
    }
    auto& record = FlowGraphAccess::Connection(*connection);
    if (record.canvas.lock().get() != this) {
        return false;
    }
    connections.erase(record.order);
    EraseFrom(connectionsByPoint, record.input.get(), connection);
    EraseFrom(connectionsByPoint, record.output.get(), connection);
    connectionsByPair.erase(std::make_pair(record.input.get(), record.output.get()));
    --FlowGraphAccess::Point(*record.input).connectionCount;
    --FlowGraphAccess::Point(*record.output).connectionCount;
    record.canvas.reset();
    record.order = 0;
    Notify(
        {FlowGraphChange::Kind::ConnectionRemoved, connection->GetInputNode(), connection, {}, 0});
    return true;
}

void flowGraphPartData::RemoveConnectionsOf(const PointPtr& point) {
    auto found = connectionsByPoint.find(point.get());
    if (found == connectionsByPoint.end()) {
        return;
    }
    const auto attached = found->second;
    for (const auto& connection : attached) {
        RemoveConnection(connection);
    }
}

std::vector<flowGraphPartData::ConnectionPtr> flowGraphPartData::ConnectionsOf(
    const NodePtr& node) const {
    std::vector<ConnectionPtr> result;
    for (const auto& point : FlowGraphAccess::Node(*node).points) {
        auto found = connectionsByPoint.find(point.get());
        if (found != connectionsByPoint.end()) {
            result.insert(result.end(), found->second.begin(), found->second.end());
        }
    }
    std::sort(result.begin(), result.end(), [](const auto& a, const auto& b) {
        return FlowGraphAccess::Connection(*a).order < FlowGraphAccess::Connection(*b).order;
    });
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
}

bool flowGraphPartData::Contains(const NodePtr& node) const {
    return node && FlowGraphAccess::Node(*node).canvas.lock().get() == this;
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
    nodes.erase(record.order);
    record.canvas.reset();
    record.order = 0;
    if (wasSelected) {
        Notify({FlowGraphChange::Kind::SelectionChanged, {}, {}, {}, 0});
    }
    Notify({FlowGraphChange::Kind::NodeRemoved, node, {}, {}, 0});
    return true;
}

}  // namespace ZML
