#pragma once

// The private records of the canvas classes and the few operations they share. Only the canvas
// sources include this header.

#include <boost/signals2.hpp>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ZML/FlowGraphChange.h"
#include "ZML/FlowGraphConnectionEx.h"
#include "ZML/FlowGraphConnectionPointEx.h"
#include "ZML/FlowGraphDisplayInfo.h"
#include "ZML/FlowGraphFont.h"
#include "ZML/FlowGraphLocation.h"
#include "ZML/FlowGraphNodeEx.h"
#include "ZML/FlowGraphRect.h"

namespace ZML {

struct flowGraphPartData;

struct flowGraphPointData {
    std::wstring caption;
    std::wstring tooltip;
    std::uint32_t color = 0x808080;
    std::uint32_t captionColor = 0;
    bool italics = false;
    bool input = true;
    int maxConnections = 0;
    std::weak_ptr<FlowGraphNodeEx> node;
    // Kept by the canvas the node is on, so that the maximum check costs nothing.
    std::size_t connectionCount = 0;
};

struct flowGraphNodeData {
    std::wstring caption;
    std::wstring tooltip;
    std::wstring icon;
    std::uint32_t color = 0xFFFFFF;
    std::uint32_t outlineColor = 0;
    std::uint32_t textColor = 0;
    std::uint32_t selectedTextColor = 0xD77800;
    int flowNodeType = 0;
    int state = 0;
    double progress = 0;
    double progressMinimum = 0;
    double progressMaximum = 100;
    FlowGraphLocation location;
    int orientation = FlowGraphNodeEx::LeftToRight;
    bool textOnly = false;
    FlowGraphFont font;
    std::vector<std::shared_ptr<FlowGraphConnectionPointEx>> points;
    std::weak_ptr<flowGraphPartData> canvas;
    // Position in the canvas's node order while on a canvas.
    std::uint64_t order = 0;
    bool selected = false;
};

struct flowGraphConnectionData {
    std::shared_ptr<FlowGraphConnectionPointEx> input;
    std::shared_ptr<FlowGraphConnectionPointEx> output;
    std::uint32_t color = 0x404040;
    std::shared_ptr<void> userData;
    std::weak_ptr<flowGraphPartData> canvas;
    std::uint64_t order = 0;
};

// The canvas is used on one thread, so its callback lists need no locking.
template <class Signature>
using FlowGraphSignal = typename boost::signals2::signal_type<
    Signature, boost::signals2::keywords::mutex_type<boost::signals2::dummy_mutex>>::type;

struct PointPairHash {
    std::size_t operator()(const std::pair<const FlowGraphConnectionPointEx*,
                                           const FlowGraphConnectionPointEx*>& key) const noexcept {
        auto a = reinterpret_cast<std::uintptr_t>(key.first);
        auto b = reinterpret_cast<std::uintptr_t>(key.second);
        return std::hash<std::uintptr_t>{}(a ^ (b * 0x9E3779B97F4A7C15ull));
    }
};

struct flowGraphPartData : std::enable_shared_from_this<flowGraphPartData> {
    using NodePtr = std::shared_ptr<FlowGraphNodeEx>;
    using PointPtr = std::shared_ptr<FlowGraphConnectionPointEx>;
    using ConnectionPtr = std::shared_ptr<FlowGraphConnectionEx>;
    using PointKey = const FlowGraphConnectionPointEx*;

    std::map<std::uint64_t, NodePtr> nodes;
    std::uint64_t nextNodeOrder = 1;
    std::map<std::uint64_t, ConnectionPtr> connections;
    std::uint64_t nextConnectionOrder = 1;
    // Connections by each of their two points, and by (input, output).
    std::unordered_map<PointKey, std::vector<ConnectionPtr>> connectionsByPoint;
    std::unordered_map<std::pair<PointKey, PointKey>, ConnectionPtr, PointPairHash>
        connectionsByPair;
    std::map<std::uint64_t, NodePtr> selection;
    std::weak_ptr<FlowGraphConnectionPointEx> clickedPoint;

    FlowGraphDisplayInfo display;
    int viewWidth = 800;
    int viewHeight = 600;
    bool readonly = false;
    int tooltipDelay = 500;
    bool showPortNames = true;
    bool showPortData = false;

    FlowGraphSignal<void(const FlowGraphChange&)> changed;
    FlowGraphSignal<void(const ConnectionPtr&)> userConnectionAdded;
    FlowGraphSignal<void(const ConnectionPtr&)> userConnectionRemoved;
    FlowGraphSignal<void(const NodePtr&)> userNodeChanged;
    FlowGraphSignal<void(const NodePtr&)> userNodeRemoved;

    void Notify(FlowGraphChange change) {
        if (!changed.empty()) {
            changed(change);
        }
    }
    void NotifyNode(const NodePtr& node, unsigned aspects, const PointPtr& point = {}) {
        if (!changed.empty()) {
            changed(FlowGraphChange{FlowGraphChange::Kind::NodeChanged, node, {}, point, aspects});
        }
    }

    void AddConnection(const ConnectionPtr& connection);
    bool RemoveConnection(const ConnectionPtr& connection);
    // Removes every connection that ends at `point`, in the order added.
    void RemoveConnectionsOf(const PointPtr& point);
    bool RemoveNode(const NodePtr& node);
    std::vector<ConnectionPtr> ConnectionsOf(const NodePtr& node) const;
    bool Contains(const NodePtr& node) const;
};

// The door from one canvas class into the records of the others.
struct FlowGraphAccess {
    static flowGraphNodeData& Node(const FlowGraphNodeEx& node) { return *node.nodeData; }
    static flowGraphPointData& Point(const FlowGraphConnectionPointEx& point) {
        return *point.pointData;
    }
    static flowGraphConnectionData& Connection(const FlowGraphConnectionEx& connection) {
        return *connection.connectionData;
    }
    // The canvas that `node` is on, or null.
    static std::shared_ptr<flowGraphPartData> CanvasOf(const FlowGraphNodeEx& node) {
        return node.nodeData->canvas.lock();
    }
};

// Node geometry by the canvas metrics (flowgraphgeometry.cpp).
FlowGraphRect NodeBounds(const flowGraphNodeData& node);
FlowGraphLocation PointPosition(const flowGraphNodeData& node, std::size_t index);
// The radius around a point's position in which a press hits it.
constexpr int kPointHitRadius = 7;

}  // namespace ZML
