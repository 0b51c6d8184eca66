#include "ZML/FlowGraphConnectionPointEx.h"

#include "QuarnLog/Exception.h"
#include "canvas/flowgraphdata.h"
#include "qtxt/Text.h"

namespace ZML {

namespace {

// Tells the canvas of the point's node, if any, that the point changed.
void PointChanged(FlowGraphConnectionPointEx& point, unsigned aspects) {
    auto node = point.GetNode();
    if (!node) {
        return;
    }
    if (auto canvas = FlowGraphAccess::CanvasOf(*node)) {
        canvas->NotifyNode(node, aspects, point.shared_from_this());
    }
}

}  // namespace

FlowGraphConnectionPointEx::FlowGraphConnectionPointEx()
    : pointData(std::make_shared<flowGraphPointData>()) {}

FlowGraphConnectionPointEx::~FlowGraphConnectionPointEx() = default;

void FlowGraphConnectionPointEx::PreDraw() {
    if (pointData->tooltip.empty() && !pointData->caption.empty()) {
        SetTooltip(pointData->caption);
    }
}

bool FlowGraphConnectionPointEx::CanConnect(
    const std::shared_ptr<FlowGraphConnectionPointEx>& other) {
    if (!other || other.get() == this || other->IsInput() == IsInput()) {
        return false;
    }
    auto otherNode = other->GetNode();
    return otherNode && otherNode != GetNode();
}

void FlowGraphConnectionPointEx::SetCaption(const std::wstring& caption) {
    if (pointData->caption != caption) {
        pointData->caption = caption;
        PointChanged(*this, FlowGraphChange::Points | FlowGraphChange::Geometry);
    }
}
const std::wstring& FlowGraphConnectionPointEx::GetCaption() const {
    return pointData->caption;
}

void FlowGraphConnectionPointEx::SetTooltip(const std::wstring& tooltip) {
    if (pointData->tooltip != tooltip) {
        pointData->tooltip = tooltip;
        PointChanged(*this, FlowGraphChange::Points);
    }
}
const std::wstring& FlowGraphConnectionPointEx::GetTooltip() const {
    return pointData->tooltip;
}

void FlowGraphConnectionPointEx::SetColor(std::uint32_t color) {
    if (pointData->color != color) {
        pointData->color = color;
        PointChanged(*this, FlowGraphChange::Points);
    }
}
std::uint32_t FlowGraphConnectionPointEx::GetColor() const {
    return pointData->color;
}

void FlowGraphConnectionPointEx::SetCaptionColor(std::uint32_t color) {
    if (pointData->captionColor != color) {
        pointData->captionColor = color;
        PointChanged(*this, FlowGraphChange::Points);
    }
}
std::uint32_t FlowGraphConnectionPointEx::GetCaptionColor() const {
    return pointData->captionColor;
}

void FlowGraphConnectionPointEx::SetItalics(bool italics) {
    if (pointData->italics != italics) {
        pointData->italics = italics;
        PointChanged(*this, FlowGraphChange::Points);
    }
}
bool FlowGraphConnectionPointEx::GetItalics() const {
    return pointData->italics;
}

// A point that already has connections keeps its direction: turning it round would leave
// connections running from input to input.
static void SetDirection(FlowGraphConnectionPointEx& point, flowGraphPointData& data, bool input) {
    if (data.input == input) {
        return;
    }
    if (!data.connections.empty()) {
        QUARN_THROW("The connection point \"" + qtxt::narrow(data.caption) +
                    "\" has connections; its direction cannot change.");
    }
    data.input = input;
    PointChanged(point, FlowGraphChange::Points | FlowGraphChange::Geometry);
}

void FlowGraphConnectionPointEx::SetInput() {
    SetDirection(*this, *pointData, true);
}
void FlowGraphConnectionPointEx::SetOutput() {
    SetDirection(*this, *pointData, false);
}
bool FlowGraphConnectionPointEx::IsInput() const {
    return pointData->input;
}
bool FlowGraphConnectionPointEx::IsOutput() const {
    return !pointData->input;
}

void FlowGraphConnectionPointEx::SetMaxConnections(int maximum) {
    if (maximum < 0) {
        QUARN_THROW("The maximum number of connections must not be negative (got " +
                    std::to_string(maximum) + ").");
    }
    pointData->maxConnections = maximum;
}
int FlowGraphConnectionPointEx::GetMaxConnections() const {
    return pointData->maxConnections;
}

std::shared_ptr<FlowGraphNodeEx> FlowGraphConnectionPointEx::GetNode() const {
    return pointData->node.lock();
}

std::size_t FlowGraphConnectionPointEx::GetConnectionCount() const {
    return pointData->connections.size();
}

}  // namespace ZML
