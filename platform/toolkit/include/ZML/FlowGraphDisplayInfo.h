#pragma once

namespace ZML {

// How the canvas is shown: the zoom factor and the canvas coordinate that appears at the top-left
// corner of the view. A canvas point (cx, cy) is drawn at ((cx - scrollX) * scale,
// (cy - scrollY) * scale) in view pixels.
struct FlowGraphDisplayInfo {
    double scale = 1.0;
    double scrollX = 0.0;
    double scrollY = 0.0;
    bool operator==(const FlowGraphDisplayInfo&) const = default;
};

}  // namespace ZML
