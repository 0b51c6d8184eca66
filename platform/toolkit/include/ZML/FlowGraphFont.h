#pragma once

#include <string>

namespace ZML {

// The font of a text-only node. `size` is the text height in canvas units (pixels at scale 1).
struct FlowGraphFont {
    std::wstring name;
    int size = 15;
    bool bold = false;
    bool italics = false;
    bool underline = false;
    bool operator==(const FlowGraphFont&) const = default;
};

}  // namespace ZML
