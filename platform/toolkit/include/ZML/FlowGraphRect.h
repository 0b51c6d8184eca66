#pragma once

namespace ZML {

// An axis-aligned rectangle in canvas units: the top-left corner and the size.
struct FlowGraphRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool Contains(double px, double py) const {
        return px >= x && py >= y && px < x + width && py < y + height;
    }
    // True when `other` lies wholly inside this rectangle.
    bool Contains(const FlowGraphRect& other) const {
        return other.x >= x && other.y >= y && other.x + other.width <= x + width &&
               other.y + other.height <= y + height;
    }
    bool operator==(const FlowGraphRect&) const = default;
};

}  // namespace ZML
