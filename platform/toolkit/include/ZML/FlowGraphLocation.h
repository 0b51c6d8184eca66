#pragma once

namespace ZML {

// A position on the canvas in whole canvas units (pixels at scale 1); y grows downwards.
struct FlowGraphLocation {
    int x = 0;
    int y = 0;
    bool operator==(const FlowGraphLocation&) const = default;
};

}  // namespace ZML
