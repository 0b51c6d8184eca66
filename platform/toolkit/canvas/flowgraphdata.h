#pragma once

// The private records of the canvas classes and the few operations they share. Only the canvas
// sources include this header.

#include <algorithm>
#include <boost/container/small_vector.hpp>
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
    // The connections that end here, in the order added: the index behind the per-point lookups.
    // The canvas the node is on owns them, and empties the list when it lets them go.
    // Most points have one or two connections: those need no allocation.
    boost::container::small_vector<FlowGraphConnectionEx*, 2> connections;
};

struct flowGraphNodeData {
    std::wstring caption;
    std::wstring tooltip;
    std::wstring icon;
    std::shared_ptr<Icon> iconObject;
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
    // The same canvas, for the cheap "is it on this canvas" test; the canvas clears it whenever it
    // lets the node go, itself included.
    const flowGraphPartData* owner = nullptr;
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
    const flowGraphPartData* owner = nullptr;
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

// Shared pointers in the order they were added, each under a sequence number that never changes.
// Appending is amortised constant; erasing finds the entry by binary search and leaves a hole,
// and holes are squeezed out once they are half of the entries. Iteration skips holes and
// yields (sequence, pointer) pairs. Nothing may be appended or erased while iterating.
template <class T>
class InsertionOrdered {
public:
    using Entry = std::pair<std::uint64_t, std::shared_ptr<T>>;

    class Iterator {
    public:
        Iterator(const Entry* at, const Entry* end) : at(at), end(end) { Skip(); }
        const Entry& operator*() const { return *at; }
        const Entry* operator->() const { return at; }
        Iterator& operator++() {
            ++at;
            Skip();
            return *this;
        }
        bool operator==(const Iterator& other) const { return at == other.at; }

    private:
        void Skip() {
            while (at != end && !at->second) {
                ++at;
            }
        }
        const Entry* at;
        const Entry* end;
    };

    Iterator begin() const { return {entries.data(), entries.data() + entries.size()}; }
    Iterator end() const {
        return {entries.data() + entries.size(), entries.data() + entries.size()};
    }
    std::size_t size() const { return entries.size() - holes; }
    bool empty() const { return size() == 0; }
    // Every entry, holes (null pointers) included, in order.
    const std::vector<Entry>& Entries() const { return entries; }

    std::uint64_t Append(std::shared_ptr<T> item) {
        entries.emplace_back(next, std::move(item));
        return next++;
    }
    bool Erase(std::uint64_t order) {
        auto found = std::lower_bound(
            entries.begin(), entries.end(), order,
            [](const Entry& entry, std::uint64_t value) { return entry.first < value; });
        if (found == entries.end() || found->first != order || !found->second) {
            return false;
        }
        found->second.reset();
        if (++holes > 16 && 2 * holes > entries.size()) {
            entries.erase(std::remove_if(entries.begin(), entries.end(),
                                         [](const Entry& entry) { return !entry.second; }),
                          entries.end());
            holes = 0;
        }
        return true;
    }
    // Empties the container and hands over what it held.
    std::vector<Entry> Take() {
        std::vector<Entry> taken;
        taken.swap(entries);
        holes = 0;
        std::erase_if(taken, [](const Entry& entry) { return !entry.second; });
        return taken;
    }

private:
    std::vector<Entry> entries;
    std::size_t holes = 0;
    std::uint64_t next = 1;
};

struct flowGraphPartData : std::enable_shared_from_this<flowGraphPartData> {
    using NodePtr = std::shared_ptr<FlowGraphNodeEx>;
    using PointPtr = std::shared_ptr<FlowGraphConnectionPointEx>;
    using ConnectionPtr = std::shared_ptr<FlowGraphConnectionEx>;
    using PointKey = const FlowGraphConnectionPointEx*;

    InsertionOrdered<FlowGraphNodeEx> nodes;
    InsertionOrdered<FlowGraphConnectionEx> connections;
    // Connections by (input, output); by single point, see flowGraphPointData::connections.
    std::unordered_map<std::pair<PointKey, PointKey>, ConnectionPtr, PointPairHash>
        connectionsByPair;
    std::map<std::uint64_t, NodePtr> selection;
    std::weak_ptr<FlowGraphConnectionPointEx> clickedPoint;
    // Nodes moved by the drag in progress, by node order.
    std::map<std::uint64_t, std::weak_ptr<FlowGraphNodeEx>> dragged;

    FlowGraphDisplayInfo display;
    // Set by the view; 0 until then (the part's geometry, or 800 x 600, stands in).
    int viewWidth = 0;
    int viewHeight = 0;
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

    // Puts a checked connection on the canvas; false (and nothing changed) when its two points
    // are joined already.
    bool AddConnection(const ConnectionPtr& connection);
    bool RemoveConnection(const ConnectionPtr& connection);
    // Removes every connection that ends at `point`, in the order added.
    void RemoveConnectionsOf(const PointPtr& point);
    bool RemoveNode(const NodePtr& node);
    // The connections of every point of `node`, each once, in the order added.
    std::vector<ConnectionPtr> ConnectionsOf(const NodePtr& node) const;
    static std::vector<ConnectionPtr> ConnectionsAt(const FlowGraphConnectionPointEx& point);
    // Clears what ties a node or connection to this canvas once the canvas has let it go.
    static void Forget(const NodePtr& node);
    static void Forget(const ConnectionPtr& connection);
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
