#include "ZML/FlowGraphPart.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <limits>
#include <unordered_set>

#include "QuarnLog/Exception.h"
#include "ZML/Script.h"
#include "canvas/flowgraphdata.h"
#include "canvas/flowgraphlayout.h"
#include "qtxt/Text.h"

namespace ZML {

namespace {

using Kind = FlowGraphChange::Kind;

std::string Describe(const std::shared_ptr<FlowGraphConnectionPointEx>& point) {
    if (!point) {
        return "(none)";
    }
    auto node = point->GetNode();
    return "\"" + qtxt::narrow(point->GetCaption()) + "\" of node " +
           (node ? "\"" + qtxt::narrow(node->GetCaption()) + "\"" : "(none)");
}

template <class Signal, class Callback>
FlowGraphPart::Token Subscribe(Signal& signal, Callback callback) {
    return std::make_shared<boost::signals2::scoped_connection>(
        signal.connect(std::move(callback)));
}

// Dialog scripts declare canvases as `flowgraph "name" { ... }`.
const bool registeredWithScripts = [] {
    RegisterPartKind("flowgraph", [](const std::string& name) -> std::shared_ptr<Part> {
        return std::make_shared<FlowGraphPart>(name);
    });
    return true;
}();

constexpr int kLayoutMargin = 20;
constexpr int kZoomMargin = 20;
constexpr double kMinScale = 0.05;
constexpr double kMaxScale = 20.0;

}  // namespace

FlowGraphPart::FlowGraphPart(std::string name)
    : Part(std::move(name)), flowGraphData(std::make_shared<flowGraphPartData>()) {}

FlowGraphPart::~FlowGraphPart() {
    // Nodes and connections may outlive the canvas in their holders' hands; they must not think
    // they are still on it.
    for (auto& [order, connection] : flowGraphData->connections) {
        flowGraphPartData::Forget(connection);
    }
    for (auto& [order, node] : flowGraphData->nodes) {
        flowGraphPartData::Forget(node);
    }
}

std::string FlowGraphPart::Kind() const {
    return "flowgraph";
}

// ---- Nodes -------------------------------------------------------------------------------------

void FlowGraphPart::AddNode(const std::shared_ptr<FlowGraphNodeEx>& node) {
    if (!node) {
        QUARN_THROW("A null node cannot be added to the canvas.");
    }
    auto& record = FlowGraphAccess::Node(*node);
    if (!record.canvas.expired()) {
        QUARN_THROW("The node \"" + qtxt::narrow(record.caption) +
                    "\" is already on a canvas and cannot be added again.");
    }
    auto& data = *flowGraphData;
    record.order = data.nodes.Append(node);
    record.canvas = flowGraphData;
    record.owner = flowGraphData.get();
    record.selected = false;
    if (!data.changed.empty()) {
        data.Notify({Kind::NodeAdded, node, {}, {}, 0});
    }
}

bool FlowGraphPart::RemoveNode(const std::shared_ptr<FlowGraphNodeEx>& node) {
    return flowGraphData->RemoveNode(node);
}

void FlowGraphPart::RemoveAllNodes() {
    auto& data = *flowGraphData;
    if (data.nodes.empty() && data.connections.empty()) {
        return;
    }
    // Taken out of the canvas first, so that whatever the records' destructors do finds it empty.
    const auto connections = data.connections.Take();
    const auto nodes = data.nodes.Take();
    data.connectionsByPair.clear();
    data.selection.clear();
    data.clickedPoint.reset();
    data.dragged.clear();
    for (const auto& [order, connection] : connections) {
        flowGraphPartData::Forget(connection);
    }
    for (const auto& [order, node] : nodes) {
        flowGraphPartData::Forget(node);
    }
    data.Notify({Kind::Cleared, {}, {}, {}, 0});
}

std::vector<std::shared_ptr<FlowGraphNodeEx>> FlowGraphPart::GetNodes() const {
    std::vector<std::shared_ptr<FlowGraphNodeEx>> result;
    result.reserve(flowGraphData->nodes.size());
    for (const auto& [order, node] : flowGraphData->nodes) {
        result.push_back(node);
    }
    return result;
}

std::size_t FlowGraphPart::GetNodeCount() const {
    return flowGraphData->nodes.size();
}

// ---- Connections -------------------------------------------------------------------------------

void FlowGraphPart::AddConnection(const std::shared_ptr<FlowGraphConnectionEx>& connection) {
    if (!connection) {
        QUARN_THROW("A null connection cannot be added to the canvas.");
    }
    if (connection->IsOnCanvas()) {
        QUARN_THROW("The connection is already on a canvas and cannot be added again.");
    }
    const auto& input = FlowGraphAccess::Connection(*connection).input;
    const auto& output = FlowGraphAccess::Connection(*connection).output;
    auto fail = [&](const std::string& problem) {
        QUARN_THROW("The connection from " + Describe(output) + " to " + Describe(input) + " " +
                    problem);
    };
    if (!input || !output) {
        fail(std::string("lacks ") + (input ? "its output" : "its input") + " point.");
    }
    if (!input->IsInput()) {
        fail("ends at an output point.");
    }
    if (!output->IsOutput()) {
        fail("starts at an input point.");
    }
    auto& data = *flowGraphData;
    if (!data.Contains(input->GetNode()) || !data.Contains(output->GetNode())) {
        fail("joins a point that is not on a node of this canvas.");
    }
    if (!data.AddConnection(connection)) {
        fail("is already on the canvas.");
    }
}

bool FlowGraphPart::RemoveConnection(const std::shared_ptr<FlowGraphConnectionEx>& connection) {
    return flowGraphData->RemoveConnection(connection);
}

std::shared_ptr<FlowGraphConnectionEx> FlowGraphPart::FindConnection(
    const std::shared_ptr<FlowGraphConnectionPointEx>& inputPoint,
    const std::shared_ptr<FlowGraphConnectionPointEx>& outputPoint) const {
    auto found = flowGraphData->connectionsByPair.find({inputPoint.get(), outputPoint.get()});
    return found == flowGraphData->connectionsByPair.end() ? nullptr : found->second;
}

std::vector<std::shared_ptr<FlowGraphConnectionEx>> FlowGraphPart::GetConnections() const {
    std::vector<std::shared_ptr<FlowGraphConnectionEx>> result;
    result.reserve(flowGraphData->connections.size());
    for (const auto& [order, connection] : flowGraphData->connections) {
        result.push_back(connection);
    }
    return result;
}

std::vector<std::shared_ptr<FlowGraphConnectionEx>> FlowGraphPart::GetConnections(
    const std::shared_ptr<FlowGraphConnectionPointEx>& point) const {
    if (!point || !flowGraphData->Contains(point->GetNode())) {
        return {};
    }
    return flowGraphPartData::ConnectionsAt(*point);
}

std::size_t FlowGraphPart::GetConnectionCount() const {
    return flowGraphData->connections.size();
}

// ---- Selection ---------------------------------------------------------------------------------

std::vector<std::shared_ptr<FlowGraphNodeEx>> FlowGraphPart::GetSelectedNodes() const {
    std::vector<std::shared_ptr<FlowGraphNodeEx>> result;
    result.reserve(flowGraphData->selection.size());
    for (const auto& [order, node] : flowGraphData->selection) {
        result.push_back(node);
    }
    return result;
}

void FlowGraphPart::ClearSelection() {
    auto& data = *flowGraphData;
    if (data.selection.empty()) {
        return;
    }
    for (auto& [order, node] : data.selection) {
        FlowGraphAccess::Node(*node).selected = false;
    }
    data.selection.clear();
    data.Notify({Kind::SelectionChanged, {}, {}, {}, 0});
}

void FlowGraphPart::AddNodeToSelection(const std::shared_ptr<FlowGraphNodeEx>& node) {
    auto& data = *flowGraphData;
    if (!data.Contains(node)) {
        QUARN_THROW("Only a node on this canvas can be selected" +
                    (node ? " (\"" + qtxt::narrow(node->GetCaption()) + "\" is not)." : "."));
    }
    auto& record = FlowGraphAccess::Node(*node);
    if (record.selected) {
        return;
    }
    record.selected = true;
    data.selection.emplace(record.order, node);
    data.Notify({Kind::SelectionChanged, {}, {}, {}, 0});
}

void FlowGraphPart::RemoveNodeFromSelection(const std::shared_ptr<FlowGraphNodeEx>& node) {
    auto& data = *flowGraphData;
    if (!data.Contains(node) || !FlowGraphAccess::Node(*node).selected) {
        return;
    }
    auto& record = FlowGraphAccess::Node(*node);
    record.selected = false;
    data.selection.erase(record.order);
    data.Notify({Kind::SelectionChanged, {}, {}, {}, 0});
}

std::shared_ptr<FlowGraphConnectionPointEx> FlowGraphPart::GetClickedPoint() const {
    return flowGraphData->clickedPoint.lock();
}

// ---- Display -----------------------------------------------------------------------------------

FlowGraphDisplayInfo FlowGraphPart::GetFlowGraphDisplayInfo() const {
    return flowGraphData->display;
}

void FlowGraphPart::SetFlowGraphDisplayInfo(const FlowGraphDisplayInfo& info) {
    if (!(info.scale > 0) || !std::isfinite(info.scale) || !std::isfinite(info.scrollX) ||
        !std::isfinite(info.scrollY)) {
        QUARN_THROW("Invalid display information: scale " + std::to_string(info.scale) +
                    ", scroll " + std::to_string(info.scrollX) + ", " +
                    std::to_string(info.scrollY) + " (the scale must be positive, all finite).");
    }
    FlowGraphDisplayInfo clamped = info;
    clamped.scale = std::clamp(info.scale, kMinScale, kMaxScale);
    if (clamped == flowGraphData->display) {
        return;
    }
    flowGraphData->display = clamped;
    flowGraphData->Notify({Kind::DisplayInfoChanged, {}, {}, {}, 0});
}

void FlowGraphPart::SetViewSize(int width, int height) {
    if (width <= 0 || height <= 0) {
        QUARN_THROW("Invalid view size " + std::to_string(width) + " x " + std::to_string(height) +
                    ".");
    }
    flowGraphData->viewWidth = width;
    flowGraphData->viewHeight = height;
}

void FlowGraphPart::ZoomTo(const std::vector<std::shared_ptr<FlowGraphNodeEx>>& nodes) {
    bool any = false;
    int left = 0, top = 0, right = 0, bottom = 0;
    for (const auto& node : nodes) {
        if (!flowGraphData->Contains(node)) {
            continue;
        }
        const auto box = node->GetBounds();
        if (!any) {
            left = box.x, top = box.y, right = box.x + box.width, bottom = box.y + box.height;
            any = true;
        } else {
            left = std::min(left, box.x);
            top = std::min(top, box.y);
            right = std::max(right, box.x + box.width);
            bottom = std::max(bottom, box.y + box.height);
        }
    }
    if (!any) {
        return;
    }
    const double width = right - left + 2 * kZoomMargin;
    const double height = bottom - top + 2 * kZoomMargin;
    const auto& data = *flowGraphData;
    const auto geometry = Geometry();
    double viewWidth = 800, viewHeight = 600;
    if (data.viewWidth > 0) {
        viewWidth = data.viewWidth, viewHeight = data.viewHeight;
    } else if (geometry.width > 0 && geometry.height > 0) {
        viewWidth = geometry.width, viewHeight = geometry.height;
    }
    const double scale =
        std::clamp(std::min({1.0, viewWidth / width, viewHeight / height}), kMinScale, kMaxScale);
    FlowGraphDisplayInfo info;
    info.scale = scale;
    info.scrollX = (left + right) / 2.0 - viewWidth / (2 * scale);
    info.scrollY = (top + bottom) / 2.0 - viewHeight / (2 * scale);
    SetFlowGraphDisplayInfo(info);
}

void FlowGraphPart::ZoomToFit() {
    ZoomTo(GetNodes());
}

FlowGraphRect FlowGraphPart::GetContentBounds() const {
    bool any = false;
    int left = 0, top = 0, right = 0, bottom = 0;
    for (const auto& [order, node] : flowGraphData->nodes) {
        const auto box = node->GetBounds();
        left = any ? std::min(left, box.x) : box.x;
        top = any ? std::min(top, box.y) : box.y;
        right = any ? std::max(right, box.x + box.width) : box.x + box.width;
        bottom = any ? std::max(bottom, box.y + box.height) : box.y + box.height;
        any = true;
    }
    return {left, top, right - left, bottom - top};
}

void FlowGraphPart::SetReadonly(bool readonly) {
    if (flowGraphData->readonly != readonly) {
        flowGraphData->readonly = readonly;
        flowGraphData->Notify({Kind::OptionsChanged, {}, {}, {}, 0});
    }
}
bool FlowGraphPart::IsReadonly() const {
    return flowGraphData->readonly;
}

void FlowGraphPart::SetTooltipDelay(int milliseconds) {
    if (milliseconds < 0) {
        QUARN_THROW("The tool tip delay must not be negative (got " + std::to_string(milliseconds) +
                    " ms).");
    }
    if (flowGraphData->tooltipDelay != milliseconds) {
        flowGraphData->tooltipDelay = milliseconds;
        flowGraphData->Notify({Kind::OptionsChanged, {}, {}, {}, 0});
    }
}
int FlowGraphPart::GetTooltipDelay() const {
    return flowGraphData->tooltipDelay;
}

void FlowGraphPart::SetShowPortNames(bool show) {
    if (flowGraphData->showPortNames != show) {
        flowGraphData->showPortNames = show;
        flowGraphData->Notify({Kind::OptionsChanged, {}, {}, {}, 0});
    }
}
bool FlowGraphPart::GetShowPortNames() const {
    return flowGraphData->showPortNames;
}

void FlowGraphPart::SetShowPortData(bool show) {
    if (flowGraphData->showPortData != show) {
        flowGraphData->showPortData = show;
        flowGraphData->Notify({Kind::OptionsChanged, {}, {}, {}, 0});
    }
}
bool FlowGraphPart::GetShowPortData() const {
    return flowGraphData->showPortData;
}

// ---- Hit testing -------------------------------------------------------------------------------

std::shared_ptr<FlowGraphNodeEx> FlowGraphPart::NodeAt(double x, double y) const {
    const auto& nodes = flowGraphData->nodes.Entries();
    for (auto it = nodes.rbegin(); it != nodes.rend(); ++it) {
        if (it->second && it->second->GetBounds().Contains(x, y)) {
            return it->second;
        }
    }
    return nullptr;
}

std::shared_ptr<FlowGraphConnectionPointEx> FlowGraphPart::PointAt(double x, double y) const {
    // Points sit on node outlines, half outside their node, so every node near the position is
    // a candidate; the nearest point within the radius wins.
    std::shared_ptr<FlowGraphConnectionPointEx> best;
    double bestDistance = std::numeric_limits<double>::max();
    constexpr double radius = kPointHitRadius;
    for (const auto& [order, node] : flowGraphData->nodes) {
        const auto& record = FlowGraphAccess::Node(*node);
        if (record.points.empty()) {
            continue;
        }
        const auto box = NodeBounds(record);
        if (x < box.x - radius || y < box.y - radius || x > box.x + box.width + radius ||
            y > box.y + box.height + radius) {
            continue;
        }
        for (std::size_t i = 0; i < record.points.size(); ++i) {
            const auto at = PointPosition(record, i);
            const double distance = std::hypot(at.x - x, at.y - y);
            if (distance <= radius && distance <= bestDistance) {
                best = record.points[i];
                bestDistance = distance;
            }
        }
    }
    return best;
}

FlowGraphHit FlowGraphPart::HitTest(double x, double y) const {
    FlowGraphHit hit;
    hit.point = PointAt(x, y);
    hit.node = hit.point ? hit.point->GetNode() : NodeAt(x, y);
    return hit;
}

// ---- Layout ------------------------------------------------------------------------------------

namespace {

LayeredLayoutInput LayoutInputOf(const flowGraphPartData& data) {
    LayeredLayoutInput input;
    std::unordered_map<const FlowGraphNodeEx*, std::size_t> index;
    index.reserve(data.nodes.size());
    std::array<int, 4> orientations{};
    for (const auto& [order, node] : data.nodes) {
        const auto& record = FlowGraphAccess::Node(*node);
        const auto box = NodeBounds(record);
        index.emplace(node.get(), input.nodes.size());
        input.nodes.push_back({box.width, box.height});
        if (!record.textOnly) {
            ++orientations.at(static_cast<std::size_t>(record.orientation));
        }
    }
    input.edges.reserve(data.connections.size());
    for (const auto& [order, connection] : data.connections) {
        const auto from = connection->GetOutputNode();
        const auto to = connection->GetInputNode();
        input.edges.emplace_back(index.at(from.get()), index.at(to.get()));
    }
    static const char* const directions[] = {"LR", "TB", "RL", "BT"};
    const auto most = std::max_element(orientations.begin(), orientations.end());
    input.rankDirection = directions[most - orientations.begin()];
    return input;
}

}  // namespace

void FlowGraphPart::Layout() {
    auto& data = *flowGraphData;
    const auto locations = ComputeLayeredLayout(LayoutInputOf(data), kLayoutMargin);
    std::vector<std::shared_ptr<FlowGraphNodeEx>> moved;
    std::size_t i = 0;
    for (const auto& node : GetNodes()) {
        const auto& to = locations.at(i++);
        if (node->GetLocation() != to) {
            node->SetLocation(to.x, to.y);
            moved.push_back(node);
        }
    }
    if (!data.readonly) {
        for (const auto& node : moved) {
            data.userNodeChanged(node);
        }
    }
}

std::string FlowGraphPart::GetLayoutGraph() const {
    return LayeredLayoutDot(LayoutInputOf(*flowGraphData));
}

// ---- User gestures -----------------------------------------------------------------------------

FlowGraphConnectCheck FlowGraphPart::CheckConnect(
    const std::shared_ptr<FlowGraphConnectionPointEx>& from,
    const std::shared_ptr<FlowGraphConnectionPointEx>& to) const {
    const auto& data = *flowGraphData;
    if (data.readonly) {
        return FlowGraphConnectCheck::ReadOnly;
    }
    if (!from || !to || !data.Contains(from->GetNode()) || !data.Contains(to->GetNode())) {
        return FlowGraphConnectCheck::MissingPoint;
    }
    if (from->GetNode() == to->GetNode()) {
        return FlowGraphConnectCheck::SameNode;
    }
    if (from->IsInput() == to->IsInput()) {
        return FlowGraphConnectCheck::SameDirection;
    }
    const auto& input = from->IsInput() ? from : to;
    const auto& output = from->IsInput() ? to : from;
    if (data.connectionsByPair.count({input.get(), output.get()})) {
        return FlowGraphConnectCheck::AlreadyConnected;
    }
    if (!input->CanConnect(output)) {
        return FlowGraphConnectCheck::Refused;
    }
    for (const auto* point : {input.get(), output.get()}) {
        const int maximum = point->GetMaxConnections();
        if (maximum > 0 && point->GetConnectionCount() >= static_cast<std::size_t>(maximum)) {
            return FlowGraphConnectCheck::MaximumReached;
        }
    }
    return FlowGraphConnectCheck::Accepted;
}

std::shared_ptr<FlowGraphConnectionEx> FlowGraphPart::UserConnect(
    const std::shared_ptr<FlowGraphConnectionPointEx>& from,
    const std::shared_ptr<FlowGraphConnectionPointEx>& to) {
    if (CheckConnect(from, to) != FlowGraphConnectCheck::Accepted) {
        return nullptr;
    }
    auto connection = std::make_shared<FlowGraphConnectionEx>();
    connection->SetInputPoint(from->IsInput() ? from : to);
    connection->SetOutputPoint(from->IsInput() ? to : from);
    // CheckConnect has made sure that the pair is not joined yet.
    [[maybe_unused]] const bool added = flowGraphData->AddConnection(connection);
    assert(added);
    flowGraphData->userConnectionAdded(connection);
    return connection;
}

bool FlowGraphPart::UserRemoveConnection(const std::shared_ptr<FlowGraphConnectionEx>& connection) {
    if (flowGraphData->readonly || !flowGraphData->RemoveConnection(connection)) {
        return false;
    }
    flowGraphData->userConnectionRemoved(connection);
    return true;
}

bool FlowGraphPart::UserMoveNodes(const std::vector<std::shared_ptr<FlowGraphNodeEx>>& nodes,
                                  int dx, int dy) {
    auto& data = *flowGraphData;
    if (data.readonly) {
        return false;
    }
    if (dx == 0 && dy == 0) {
        return true;
    }
    std::vector<std::shared_ptr<FlowGraphNodeEx>> moved;
    std::unordered_set<const FlowGraphNodeEx*> seen;
    for (const auto& node : nodes) {
        if (data.Contains(node) && seen.insert(node.get()).second) {
            const auto at = node->GetLocation();
            node->SetLocation(at.x + dx, at.y + dy);
            moved.push_back(node);
        }
    }
    for (const auto& node : moved) {
        data.userNodeChanged(node);
    }
    return true;
}

bool FlowGraphPart::UserDragNodes(const std::vector<std::shared_ptr<FlowGraphNodeEx>>& nodes,
                                  int dx, int dy) {
    auto& data = *flowGraphData;
    if (data.readonly) {
        return false;
    }
    std::unordered_set<const FlowGraphNodeEx*> seen;
    for (const auto& node : nodes) {
        if (data.Contains(node) && seen.insert(node.get()).second) {
            const auto at = node->GetLocation();
            node->SetLocation(at.x + dx, at.y + dy);
            data.dragged.emplace(FlowGraphAccess::Node(*node).order, node);
        }
    }
    return true;
}

void FlowGraphPart::UserFinishDrag() {
    auto& data = *flowGraphData;
    const auto dragged = std::move(data.dragged);
    data.dragged.clear();
    for (const auto& [order, weak] : dragged) {
        auto node = weak.lock();
        if (data.Contains(node)) {
            data.userNodeChanged(node);
        }
    }
}

bool FlowGraphPart::UserMoveSelection(int dx, int dy) {
    return UserMoveNodes(GetSelectedNodes(), dx, dy);
}

void FlowGraphPart::UserClickPoint(const std::shared_ptr<FlowGraphConnectionPointEx>& point) {
    flowGraphData->clickedPoint = point;
}

void FlowGraphPart::UserClickNode(const std::shared_ptr<FlowGraphNodeEx>& node, bool extend) {
    auto& data = *flowGraphData;
    const bool onCanvas = data.Contains(node);
    if (extend) {
        if (onCanvas) {
            node->IsSelected() ? RemoveNodeFromSelection(node) : AddNodeToSelection(node);
        }
        return;
    }
    if (onCanvas && data.selection.size() == 1 && node->IsSelected()) {
        return;
    }
    for (auto& [order, selected] : data.selection) {
        FlowGraphAccess::Node(*selected).selected = false;
    }
    const bool hadSelection = !data.selection.empty();
    data.selection.clear();
    if (onCanvas) {
        auto& record = FlowGraphAccess::Node(*node);
        record.selected = true;
        data.selection.emplace(record.order, node);
    }
    if (hadSelection || onCanvas) {
        data.Notify({Kind::SelectionChanged, {}, {}, {}, 0});
    }
}

void FlowGraphPart::UserSelectRect(const FlowGraphRect& rect, bool extend) {
    FlowGraphRect band = rect;
    if (band.width < 0) {
        band.x += band.width;
        band.width = -band.width;
    }
    if (band.height < 0) {
        band.y += band.height;
        band.height = -band.height;
    }
    auto& data = *flowGraphData;
    std::map<std::uint64_t, std::shared_ptr<FlowGraphNodeEx>> chosen;
    if (extend) {
        chosen = data.selection;
    }
    for (const auto& [order, node] : data.nodes) {
        if (band.Contains(node->GetBounds())) {
            chosen.emplace(order, node);
        }
    }
    if (chosen == data.selection) {
        return;
    }
    for (auto& [order, node] : data.selection) {
        FlowGraphAccess::Node(*node).selected = false;
    }
    data.selection = std::move(chosen);
    for (auto& [order, node] : data.selection) {
        FlowGraphAccess::Node(*node).selected = true;
    }
    data.Notify({Kind::SelectionChanged, {}, {}, {}, 0});
}

bool FlowGraphPart::UserDeleteSelection() {
    auto& data = *flowGraphData;
    if (data.readonly || data.selection.empty()) {
        return false;
    }
    const auto nodes = GetSelectedNodes();
    std::map<std::uint64_t, std::shared_ptr<FlowGraphConnectionEx>> doomed;
    for (const auto& node : nodes) {
        for (const auto& connection : data.ConnectionsOf(node)) {
            doomed.emplace(FlowGraphAccess::Connection(*connection).order, connection);
        }
    }
    for (const auto& [order, connection] : doomed) {
        if (data.RemoveConnection(connection)) {
            data.userConnectionRemoved(connection);
        }
    }
    for (const auto& node : nodes) {
        if (data.RemoveNode(node)) {
            data.userNodeRemoved(node);
        }
    }
    return true;
}

void FlowGraphPart::UserMouse(const Event& event) {
    static const std::array<std::pair<const char*, MouseCode>, 4> codes{{
        {"mousedown", MouseDown},
        {"mouseup", MouseUp},
        {"doubleclick", DoubleClick},
        {"mousemove", MouseMove},
    }};
    auto code = std::find_if(codes.begin(), codes.end(),
                             [&event](const auto& entry) { return event.name == entry.first; });
    if (code == codes.end()) {
        QUARN_THROW("\"" + event.name + "\" is not a canvas mouse event.");
    }
    const auto hit = HitTest(event.x, event.y);
    if (code->second == MouseDown) {
        flowGraphData->clickedPoint = hit.point;
    }
    Event fired = event;
    fired.key = static_cast<int>(code->second);
    fired.detail = hit;
    UserEvent(event.name, fired);
}

// ---- Callbacks ---------------------------------------------------------------------------------

FlowGraphPart::Token FlowGraphPart::OnConnectionAdded(ConnectionCallback callback) {
    return Subscribe(flowGraphData->userConnectionAdded, std::move(callback));
}
FlowGraphPart::Token FlowGraphPart::OnConnectionRemoved(ConnectionCallback callback) {
    return Subscribe(flowGraphData->userConnectionRemoved, std::move(callback));
}
FlowGraphPart::Token FlowGraphPart::OnNodeChanged(NodeCallback callback) {
    return Subscribe(flowGraphData->userNodeChanged, std::move(callback));
}
FlowGraphPart::Token FlowGraphPart::OnNodeRemoved(NodeCallback callback) {
    return Subscribe(flowGraphData->userNodeRemoved, std::move(callback));
}
FlowGraphPart::Token FlowGraphPart::OnChange(ChangeCallback callback) {
    return Subscribe(flowGraphData->changed, std::move(callback));
}

const char* FlowGraphConnectCheckText(FlowGraphConnectCheck check) {
    switch (check) {
        case FlowGraphConnectCheck::Accepted:
            return "accepted";
        case FlowGraphConnectCheck::ReadOnly:
            return "the canvas is read-only";
        case FlowGraphConnectCheck::MissingPoint:
            return "a point is missing or not on this canvas";
        case FlowGraphConnectCheck::SameNode:
            return "both points belong to the same node";
        case FlowGraphConnectCheck::SameDirection:
            return "both points have the same direction";
        case FlowGraphConnectCheck::Refused:
            return "the receiving point refuses the connection";
        case FlowGraphConnectCheck::MaximumReached:
            return "a point already has its maximum number of connections";
        case FlowGraphConnectCheck::AlreadyConnected:
            return "the points are already connected";
    }
    return "unknown";
}

}  // namespace ZML
