#pragma once

#include <memory>

#include "modelgui/SolutionBuilderNode.h"

namespace Velmar::Lattix {
class Data;
}

namespace quarn::modelgui {

struct TextNodeData;

// The canvas node of a free text annotation: a text-only node whose dictionary is the engine data
// object holding the annotation's text and font settings. The dictionary is held weakly.
class TextNode : public SolutionBuilderNode {
public:
    // Selected annotations are drawn in this colour word (red 51, green 153, blue 255).
    static constexpr unsigned SelectedTextColor = 16750899;

    TextNode();
    ~TextNode() override;

    // Remembers `dictionary` weakly.
    void SetDictionary(const std::shared_ptr<Velmar::Lattix::Data>& dictionary);
    // The dictionary, or empty when it is gone or was never set.
    std::shared_ptr<Velmar::Lattix::Data> GetDictionary() const;

private:
    std::shared_ptr<TextNodeData> textNodeData;
};

}  // namespace quarn::modelgui
