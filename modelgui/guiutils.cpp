// Lookups of canvas elements by engine object, and the flow-control points of operator nodes.
//
// The lookups answer what a walk over the canvas would answer (first match in canvas order), but
// through a per-canvas index: engine object address -> the nodes bound to it, in canvas order. The
// index follows the canvas's change reports (nodes are only ever appended, so appending keeps the
// order) and rebuilds itself from the canvas whenever it cannot be sure it is in step: a report
// that does not fit the node count it expects (a change made from inside another observer), or a
// node on a canvas rebound to another object. Every candidate is checked against its live weak
// reference before it is answered, so a reused address or an expired object never matches.

#include <cstdint>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "ZML/FlowGraphPart.h"
#include "canvasindex.h"
#include "flowcontrolpoints.h"
#include "modelgui/BodyConnectionPoint.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "modelgui/PortNode.h"
#include "modelgui/TestConnectionPoint.h"
#include "modelgui/TrueFalseConnectionPoint.h"

namespace quarn::modelgui {

namespace {

using CanvasPtr = std::shared_ptr<ZML::FlowGraphPart>;
using OperatorPtr = std::shared_ptr<Velmar::Lattix::Operator>;
using PortPtr = std::shared_ptr<Velmar::Lattix::Port>;

// Bumped whenever a node on a canvas is rebound; an index built under an older value is stale.
std::uint64_t bindingGeneration = 0;

struct IndexEntry {
    const ZML::FlowGraphNodeEx* raw = nullptr;
    std::weak_ptr<ZML::FlowGraphNodeEx> node;
};

class CanvasIndex {
public:
    std::weak_ptr<ZML::FlowGraphPart> canvas;
    ZML::FlowGraphPart::Token changeToken;

    // Brings the index in step with `part` when it may have fallen out of step.
    void Refresh(const ZML::FlowGraphPart& part) {
        if (upToDate && generation == bindingGeneration) return;
        Clear();
        for (const auto& node : part.GetNodes()) Add(node);
        upToDate = true;
        generation = bindingGeneration;
    }

    void OnChange(const ZML::FlowGraphChange& change) {
        using Kind = ZML::FlowGraphChange::Kind;
        if (!upToDate) return;  // rebuilt from the canvas at the next lookup anyway
        switch (change.kind) {
            case Kind::NodeAdded:
                if (!ExpectCount(nodeCount + 1)) return;
                Add(change.node);
                break;
            case Kind::NodeRemoved:
                if (!ExpectCount(nodeCount - 1)) return;
                Remove(change.node.get());
                break;
            case Kind::Cleared:
                Clear();
                break;
            default:
                break;
        }
    }

    template <class NodeClass, class Object>
    std::shared_ptr<NodeClass> Find(const Object& object) const {
        const auto& table = TableFor<NodeClass>();
        const auto found = table.find(object.get());
        if (found == table.end()) return nullptr;
        for (const auto& entry : found->second) {
            auto node = std::static_pointer_cast<NodeClass>(entry.node.lock());
            if (node && Bound(*node) == object) return node;
        }
        return nullptr;
    }

private:
    using Table = std::unordered_map<const void*, std::vector<IndexEntry>>;
    Table operators;
    Table ports;
    // Where each indexed node is filed, so that it can be taken out after its object has gone.
    std::unordered_map<const ZML::FlowGraphNodeEx*, std::pair<Table*, const void*>> filedAt;
    std::size_t nodeCount = 0;
    bool upToDate = false;
    std::uint64_t generation = 0;

    static OperatorPtr Bound(const OperatorNode& node) { return node.GetOperator(); }
    static PortPtr Bound(const PortNode& node) { return node.GetPort(); }

    template <class NodeClass>
    const Table& TableFor() const {
        if constexpr (std::is_same_v<NodeClass, OperatorNode>) {
            return operators;
        } else {
            return ports;
        }
    }

    bool ExpectCount(std::size_t expected) {
        const auto part = canvas.lock();
        if (part && part->GetNodeCount() == expected) return true;
        upToDate = false;
        return false;
    }

    void Clear() {
        operators.clear();
        ports.clear();
        filedAt.clear();
        nodeCount = 0;
    }

    void Add(const std::shared_ptr<ZML::FlowGraphNodeEx>& node) {
        ++nodeCount;
        Table* table = nullptr;
        const void* key = nullptr;
        if (const auto opNode = std::dynamic_pointer_cast<OperatorNode>(node)) {
            table = &operators;
            key = opNode->GetOperator().get();
        } else if (const auto portNode = std::dynamic_pointer_cast<PortNode>(node)) {
            table = &ports;
            key = portNode->GetPort().get();
        }
        if (!key) return;  // unbound or already expired: can never match
        (*table)[key].push_back({node.get(), node});
        filedAt[node.get()] = {table, key};
    }

    void Remove(const ZML::FlowGraphNodeEx* node) {
        if (nodeCount > 0) --nodeCount;
        const auto filed = filedAt.find(node);
        if (filed == filedAt.end()) return;
        auto& [table, key] = filed->second;
        const auto list = table->find(key);
        if (list != table->end()) {
            auto& entries = list->second;
            for (auto it = entries.begin(); it != entries.end(); ++it) {
                if (it->raw == node) {
                    entries.erase(it);
                    break;
                }
            }
            if (entries.empty()) table->erase(list);
        }
        filedAt.erase(filed);
    }
};

// One index per canvas, keyed by its address and checked against a weak reference, so a new
// canvas at the address of a destroyed one starts afresh.
std::map<const ZML::FlowGraphPart*, std::shared_ptr<CanvasIndex>>& Indexes() {
    static std::map<const ZML::FlowGraphPart*, std::shared_ptr<CanvasIndex>> indexes;
    return indexes;
}

CanvasIndex& IndexOf(const CanvasPtr& canvas) {
    auto& indexes = Indexes();
    auto& slot = indexes[canvas.get()];
    if (!slot || slot->canvas.expired()) {
        // Forget the indexes of canvases that have gone, now that the table is growing anyway.
        for (auto it = indexes.begin(); it != indexes.end();) {
            if (it->second && it->second->canvas.expired()) {
                it = indexes.erase(it);
            } else {
                ++it;
            }
        }
        auto index = std::make_shared<CanvasIndex>();
        index->canvas = canvas;
        const std::weak_ptr<CanvasIndex> weakIndex = index;
        index->changeToken = canvas->OnChange([weakIndex](const ZML::FlowGraphChange& change) {
            if (const auto live = weakIndex.lock()) live->OnChange(change);
        });
        indexes[canvas.get()] = index;
        auto& stored = indexes[canvas.get()];
        stored->Refresh(*canvas);
        return *stored;
    }
    slot->Refresh(*canvas);
    return *slot;
}

// The first point of class PointClass on `op`'s node that passes `accept`.
template <class PointClass, class Accept>
std::shared_ptr<PointClass> FindPoint(const CanvasPtr& canvas, const OperatorPtr& op,
                                      Accept accept) {
    const auto node = GUIUtils::FindOperatorNode(canvas, op);
    if (!node) return nullptr;
    for (const auto& point : node->GetFlowConnectionPoints()) {
        auto typed = std::dynamic_pointer_cast<PointClass>(point);
        if (typed && accept(*typed)) return typed;
    }
    return nullptr;
}

}  // namespace

void detail::NoteNodeRebound() {
    ++bindingGeneration;
}

std::shared_ptr<OperatorNode> GUIUtils::FindOperatorNode(const CanvasPtr& canvas,
                                                         const OperatorPtr& op) {
    if (!canvas || !op) return nullptr;
    return IndexOf(canvas).Find<OperatorNode>(op);
}

std::shared_ptr<PortNode> GUIUtils::FindPortNode(const CanvasPtr& canvas, const PortPtr& port) {
    if (!canvas || !port) return nullptr;
    return IndexOf(canvas).Find<PortNode>(port);
}

std::shared_ptr<PortDescriptionConnectionPoint> GUIUtils::FindPortDescriptionPoint(
    const CanvasPtr& canvas, const OperatorPtr& op, const PortPtr& port) {
    if (!port) return nullptr;
    return FindPoint<PortDescriptionConnectionPoint>(
        canvas, op,
        [&port](const PortDescriptionConnectionPoint& p) { return p.GetPort() == port; });
}

std::shared_ptr<FlowControlConnectionPoint> GUIUtils::FindPrevPoint(const CanvasPtr& canvas,
                                                                    const OperatorPtr& op) {
    return FindPoint<FlowControlConnectionPoint>(
        canvas, op,
        [](const FlowControlConnectionPoint& p) { return p.GetCaption() == L"Previous"; });
}

std::shared_ptr<FlowControlConnectionPoint> GUIUtils::FindNextPoint(const CanvasPtr& canvas,
                                                                    const OperatorPtr& op) {
    return FindPoint<FlowControlConnectionPoint>(
        canvas, op, [](const FlowControlConnectionPoint& p) { return p.GetCaption() == L"Next"; });
}

std::shared_ptr<TestConnectionPoint> GUIUtils::FindTestPoint(const CanvasPtr& canvas,
                                                             const OperatorPtr& op) {
    return FindPoint<TestConnectionPoint>(canvas, op,
                                          [](const TestConnectionPoint&) { return true; });
}

std::shared_ptr<BodyConnectionPoint> GUIUtils::FindBodyPoint(const CanvasPtr& canvas,
                                                             const OperatorPtr& op) {
    return FindPoint<BodyConnectionPoint>(canvas, op,
                                          [](const BodyConnectionPoint&) { return true; });
}

std::shared_ptr<TrueFalseConnectionPoint> GUIUtils::FindTrueFalsePoint(const CanvasPtr& canvas,
                                                                       const OperatorPtr& op,
                                                                       bool isTrue) {
    return FindPoint<TrueFalseConnectionPoint>(
        canvas, op,
        [isTrue](const TrueFalseConnectionPoint& p) { return p.IsTruePoint() == isTrue; });
}

// The points themselves are made where drawing makes them, so both paths give the same points.
void GUIUtils::AddFlowControl(const CanvasPtr& canvas, const OperatorPtr& op) {
    const auto node = FindOperatorNode(canvas, op);
    if (!node) return;
    detail::AddFlowControlPoints(node, op);
}

void GUIUtils::RemoveFlowControl(const CanvasPtr& canvas, const OperatorPtr& op) {
    const auto node = FindOperatorNode(canvas, op);
    if (!node) return;
    if (const auto next = FindNextPoint(canvas, op)) node->RemoveConnectionPoint(next);
    if (const auto previous = FindPrevPoint(canvas, op)) node->RemoveConnectionPoint(previous);
}

}  // namespace quarn::modelgui
