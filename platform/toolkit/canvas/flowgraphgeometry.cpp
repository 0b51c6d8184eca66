// The canvas metrics. Texts are measured by the installed TextMetrics (the backend's fonts, or the
// headless fixed character widths); views draw within these boxes, so hit testing and layout agree
// with what is shown. docs/canvas.md lists the numbers.

#include <algorithm>

#include "ZML/TextMetrics.h"
#include "canvas/flowgraphdata.h"

namespace ZML {

namespace {

constexpr int kHeaderHeight = 24;
constexpr int kRowHeight = 18;
constexpr int kPadding = 8;
constexpr int kIconSpace = 20;  // 16 pixel icon and a 4 pixel gap
constexpr int kMinWidth = 80;
constexpr int kColumnGap = 16;  // between input and output captions
constexpr int kMinSlotWidth = 24;

int CaptionTextWidth(const std::wstring& text) {
    return TextMetrics::Current().Measure(CanvasText::Caption, CanvasCaptionFont(), text).width;
}

int PointTextWidth(const TextMetrics& metrics, const flowGraphPointData& point) {
    if (point.caption.empty()) {
        return 0;
    }
    return metrics
        .Measure(CanvasText::PointCaption, CanvasPointCaptionFont(point.italics), point.caption)
        .width;
}

struct PointCounts {
    int inputs = 0;
    int outputs = 0;
    int widestInput = 0;
    int widestOutput = 0;
};

PointCounts CountPoints(const flowGraphNodeData& node) {
    PointCounts counts;
    const auto& metrics = TextMetrics::Current();
    for (const auto& point : node.points) {
        const auto& record = FlowGraphAccess::Point(*point);
        if (record.input) {
            ++counts.inputs;
            counts.widestInput = std::max(counts.widestInput, PointTextWidth(metrics, record));
        } else {
            ++counts.outputs;
            counts.widestOutput = std::max(counts.widestOutput, PointTextWidth(metrics, record));
        }
    }
    return counts;
}

bool Horizontal(int orientation) {
    return orientation == FlowGraphNodeEx::LeftToRight ||
           orientation == FlowGraphNodeEx::RightToLeft;
}

int CaptionWidth(const flowGraphNodeData& node) {
    return 2 * kPadding + (node.icon.empty() ? 0 : kIconSpace) + CaptionTextWidth(node.caption);
}

int SlotWidth(const PointCounts& counts) {
    return std::max(kMinSlotWidth, std::max(counts.widestInput, counts.widestOutput) + kPadding);
}

FlowGraphRect TextBounds(const flowGraphNodeData& node) {
    const auto size =
        TextMetrics::Current().Measure(CanvasText::Annotation, node.font, node.caption);
    const int width = std::max(10, size.width) + kPadding;
    const int height = size.height + 4;
    return {node.location.x, node.location.y, width, height};
}

}  // namespace

FlowGraphRect NodeBounds(const flowGraphNodeData& node) {
    if (node.textOnly) {
        return TextBounds(node);
    }
    const auto counts = CountPoints(node);
    int width = std::max(kMinWidth, CaptionWidth(node));
    int height = kHeaderHeight;
    if (Horizontal(node.orientation)) {
        const int rows = std::max(counts.inputs, counts.outputs);
        width =
            std::max(width, 2 * kPadding + counts.widestInput + kColumnGap + counts.widestOutput);
        height += rows * kRowHeight + (rows > 0 ? 4 : 0);
    } else {
        const int slots = std::max(counts.inputs, counts.outputs);
        width = std::max(width, slots * SlotWidth(counts));
        height += (counts.inputs > 0 ? kRowHeight : 0) + (counts.outputs > 0 ? kRowHeight : 0);
    }
    return {node.location.x, node.location.y, width, height};
}

FlowGraphLocation PointPosition(const flowGraphNodeData& node, std::size_t index) {
    const auto bounds = NodeBounds(node);
    const auto& record = FlowGraphAccess::Point(*node.points.at(index));
    // The point's ordinal among the points of its own direction, and how many there are.
    int ordinal = 0;
    int count = 0;
    for (std::size_t i = 0; i < node.points.size(); ++i) {
        if (FlowGraphAccess::Point(*node.points[i]).input == record.input) {
            if (i < index) {
                ++ordinal;
            }
            ++count;
        }
    }
    const bool input = record.input;
    switch (node.orientation) {
        case FlowGraphNodeEx::TopToBottom:
        case FlowGraphNodeEx::BottomToTop: {
            const bool onTop = input == (node.orientation == FlowGraphNodeEx::TopToBottom);
            const int x = bounds.x + (2 * ordinal + 1) * bounds.width / (2 * count);
            return {x, onTop ? bounds.y : bounds.y + bounds.height};
        }
        default: {
            const bool onLeft = input == (node.orientation == FlowGraphNodeEx::LeftToRight);
            const int y = bounds.y + kHeaderHeight + ordinal * kRowHeight + kRowHeight / 2;
            return {onLeft ? bounds.x : bounds.x + bounds.width, y};
        }
    }
}

}  // namespace ZML
