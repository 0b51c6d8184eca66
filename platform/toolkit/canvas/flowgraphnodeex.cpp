#include "ZML/FlowGraphNodeEx.h"

#include <algorithm>

#include "QuarnLog/Exception.h"
#include "ZML/FlowGraphConnectionPointEx.h"
#include "ZML/Icon.h"
#include "canvas/flowgraphdata.h"
#include "qtxt/Text.h"

namespace ZML {

namespace {

void NodeChanged(FlowGraphNodeEx& node, unsigned aspects) {
    if (auto canvas = FlowGraphAccess::CanvasOf(node)) {
        canvas->NotifyNode(node.shared_from_this(), aspects);
    }
}

// Assigns `value` to `field` and reports `aspects` when it differs.
template <class T>
void Update(FlowGraphNodeEx& node, T& field, const T& value, unsigned aspects) {
    if (!(field == value)) {
        field = value;
        NodeChanged(node, aspects);
    }
}

}  // namespace

FlowGraphNodeEx::FlowGraphNodeEx() : nodeData(std::make_shared<flowGraphNodeData>()) {}

FlowGraphNodeEx::~FlowGraphNodeEx() = default;

void FlowGraphNodeEx::SetCaption(const std::wstring& caption) {
    Update(*this, nodeData->caption, caption,
           FlowGraphChange::Appearance | FlowGraphChange::Geometry);
}
const std::wstring& FlowGraphNodeEx::GetCaption() const {
    return nodeData->caption;
}

void FlowGraphNodeEx::SetTooltip(const std::wstring& tooltip) {
    Update(*this, nodeData->tooltip, tooltip, FlowGraphChange::Appearance);
}
const std::wstring& FlowGraphNodeEx::GetTooltip() const {
    return nodeData->tooltip;
}

void FlowGraphNodeEx::SetIcon(const std::wstring& icon) {
    if (nodeData->icon == icon && !nodeData->iconObject) {
        return;
    }
    nodeData->icon = icon;
    nodeData->iconObject.reset();
    NodeChanged(*this, FlowGraphChange::Appearance | FlowGraphChange::Geometry);
}

void FlowGraphNodeEx::SetIcon(const std::shared_ptr<Icon>& icon) {
    if (icon == nodeData->iconObject) {
        return;
    }
    nodeData->icon = !icon                   ? std::wstring()
                     : icon->IsPlaceholder() ? icon->RequestedName()
                                             : icon->Path();
    nodeData->iconObject = icon;
    NodeChanged(*this, FlowGraphChange::Appearance | FlowGraphChange::Geometry);
}

const std::wstring& FlowGraphNodeEx::GetIcon() const {
    return nodeData->icon;
}
std::shared_ptr<Icon> FlowGraphNodeEx::GetIconObject() const {
    return nodeData->iconObject;
}

void FlowGraphNodeEx::SetColor(std::uint32_t color) {
    Update(*this, nodeData->color, color, FlowGraphChange::Appearance);
}
std::uint32_t FlowGraphNodeEx::GetColor() const {
    return nodeData->color;
}

void FlowGraphNodeEx::SetOutlineColor(std::uint32_t color) {
    Update(*this, nodeData->outlineColor, color, FlowGraphChange::Appearance);
}
std::uint32_t FlowGraphNodeEx::GetOutlineColor() const {
    return nodeData->outlineColor;
}

void FlowGraphNodeEx::SetFlowNodeType(int type) {
    Update(*this, nodeData->flowNodeType, type, FlowGraphChange::Appearance);
}
int FlowGraphNodeEx::GetFlowNodeType() const {
    return nodeData->flowNodeType;
}

void FlowGraphNodeEx::SetState(int state) {
    if (state < Idle || state > Information) {
        QUARN_THROW("Unknown node state " + std::to_string(state) + " for node \"" +
                    qtxt::narrow(nodeData->caption) + "\".");
    }
    Update(*this, nodeData->state, state, FlowGraphChange::State);
}
int FlowGraphNodeEx::GetState() const {
    return nodeData->state;
}

void FlowGraphNodeEx::SetProgress(double progress) {
    Update(*this, nodeData->progress, progress, FlowGraphChange::State);
}
double FlowGraphNodeEx::GetProgress() const {
    return nodeData->progress;
}

void FlowGraphNodeEx::SetProgressBounds(double minimum, double maximum) {
    if (!(minimum <= maximum)) {
        QUARN_THROW("Progress bounds " + std::to_string(minimum) + " .. " +
                    std::to_string(maximum) + " of node \"" + qtxt::narrow(nodeData->caption) +
                    "\" are reversed.");
    }
    if (nodeData->progressMinimum != minimum || nodeData->progressMaximum != maximum) {
        nodeData->progressMinimum = minimum;
        nodeData->progressMaximum = maximum;
        NodeChanged(*this, FlowGraphChange::State);
    }
}
double FlowGraphNodeEx::GetProgressMinimum() const {
    return nodeData->progressMinimum;
}
double FlowGraphNodeEx::GetProgressMaximum() const {
    return nodeData->progressMaximum;
}

void FlowGraphNodeEx::SetLocation(int x, int y) {
    Update(*this, nodeData->location, FlowGraphLocation{x, y}, FlowGraphChange::Geometry);
}
FlowGraphLocation FlowGraphNodeEx::GetLocation() const {
    return nodeData->location;
}

void FlowGraphNodeEx::SetOrientation(int orientation) {
    if (orientation < LeftToRight || orientation > BottomToTop) {
        QUARN_THROW("Unknown node orientation " + std::to_string(orientation) + " for node \"" +
                    qtxt::narrow(nodeData->caption) + "\".");
    }
    Update(*this, nodeData->orientation, orientation, FlowGraphChange::Geometry);
}
int FlowGraphNodeEx::GetOrientation() const {
    return nodeData->orientation;
}

void FlowGraphNodeEx::SetTextOnly(bool textOnly) {
    Update(*this, nodeData->textOnly, textOnly,
           FlowGraphChange::Appearance | FlowGraphChange::Geometry);
}
bool FlowGraphNodeEx::IsTextOnly() const {
    return nodeData->textOnly;
}

void FlowGraphNodeEx::SetTextFont(const std::wstring& name, int size, bool bold, bool italics,
                                  bool underline) {
    if (size <= 0) {
        QUARN_THROW("Font size " + std::to_string(size) + " of node \"" +
                    qtxt::narrow(nodeData->caption) + "\" is not positive.");
    }
    Update(*this, nodeData->font, FlowGraphFont{name, size, bold, italics, underline},
           FlowGraphChange::Appearance | FlowGraphChange::Geometry);
}
const FlowGraphFont& FlowGraphNodeEx::GetTextFont() const {
    return nodeData->font;
}

void FlowGraphNodeEx::SetTextColor(std::uint32_t color) {
    Update(*this, nodeData->textColor, color, FlowGraphChange::Appearance);
}
std::uint32_t FlowGraphNodeEx::GetTextColor() const {
    return nodeData->textColor;
}

void FlowGraphNodeEx::SetSelectedTextColor(std::uint32_t color) {
    Update(*this, nodeData->selectedTextColor, color, FlowGraphChange::Appearance);
}
std::uint32_t FlowGraphNodeEx::GetSelectedTextColor() const {
    return nodeData->selectedTextColor;
}

void FlowGraphNodeEx::AddConnectionPoint(const std::shared_ptr<FlowGraphConnectionPointEx>& point) {
    AddConnectionPointAt(nodeData->points.size(), point);
}

void FlowGraphNodeEx::AddConnectionPointAt(
    std::size_t index, const std::shared_ptr<FlowGraphConnectionPointEx>& point) {
    auto where = [this] { return "node \"" + qtxt::narrow(nodeData->caption) + "\""; };
    if (!point) {
        QUARN_THROW("A null connection point cannot be added to " + where() + ".");
    }
    auto& pointRecord = FlowGraphAccess::Point(*point);
    if (!pointRecord.node.expired()) {
        QUARN_THROW("The connection point \"" + qtxt::narrow(point->GetCaption()) +
                    "\" already belongs to a node and cannot be added to " + where() + ".");
    }
    if (index > nodeData->points.size()) {
        QUARN_THROW("Connection point index " + std::to_string(index) + " is past the end of " +
                    where() + ", which has " + std::to_string(nodeData->points.size()) +
                    " points.");
    }
    auto self = weak_from_this();
    if (self.expired()) {
        QUARN_THROW("Connection points can only be added to a node held by std::shared_ptr (" +
                    where() + ").");
    }
    pointRecord.node = self;
    nodeData->points.insert(nodeData->points.begin() + static_cast<std::ptrdiff_t>(index), point);
    if (auto canvas = nodeData->canvas.lock()) {
        canvas->NotifyNode(shared_from_this(), FlowGraphChange::Points | FlowGraphChange::Geometry,
                           point);
    }
}

bool FlowGraphNodeEx::RemoveConnectionPoint(
    const std::shared_ptr<FlowGraphConnectionPointEx>& point) {
    auto& points = nodeData->points;
    auto found = std::find(points.begin(), points.end(), point);
    if (!point || found == points.end()) {
        return false;
    }
    auto canvas = nodeData->canvas.lock();
    if (canvas) {
        canvas->RemoveConnectionsOf(point);
        if (canvas->clickedPoint.lock() == point) {
            canvas->clickedPoint.reset();
        }
    }
    // The connection callbacks may have changed the point list.
    found = std::find(points.begin(), points.end(), point);
    if (found != points.end()) {
        points.erase(found);
    }
    FlowGraphAccess::Point(*point).node.reset();
    if (canvas) {
        canvas->NotifyNode(shared_from_this(), FlowGraphChange::Points | FlowGraphChange::Geometry,
                           point);
    }
    return true;
}

std::vector<std::shared_ptr<FlowGraphConnectionPointEx>> FlowGraphNodeEx::GetFlowConnectionPoints()
    const {
    return nodeData->points;
}

std::size_t FlowGraphNodeEx::GetConnectionPointCount() const {
    return nodeData->points.size();
}

void FlowGraphNodeEx::Remove() {
    if (auto canvas = nodeData->canvas.lock()) {
        canvas->RemoveNode(shared_from_this());
    }
}

bool FlowGraphNodeEx::IsOnCanvas() const {
    return !nodeData->canvas.expired();
}
bool FlowGraphNodeEx::IsSelected() const {
    return nodeData->selected;
}

FlowGraphRect FlowGraphNodeEx::GetBounds() const {
    return NodeBounds(*nodeData);
}

FlowGraphLocation FlowGraphNodeEx::GetPointPosition(
    const std::shared_ptr<FlowGraphConnectionPointEx>& point) const {
    const auto& points = nodeData->points;
    auto found = std::find(points.begin(), points.end(), point);
    if (!point || found == points.end()) {
        return nodeData->location;
    }
    return PointPosition(*nodeData, static_cast<std::size_t>(found - points.begin()));
}

}  // namespace ZML
