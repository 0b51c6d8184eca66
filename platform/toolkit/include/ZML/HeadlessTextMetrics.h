#pragma once

#include "ZML/TextMetrics.h"

namespace ZML {

// The measurer used without a font engine: every character of a line is equally wide.
// - Captions and point captions: 7 units per character, whatever the font.
// - Annotations: half the font size per character, rounded up, at least 1.
// A line is font size + 4 units high; an empty text is one line of width 0.
// Headless layouts (tests, batch runs) depend on these numbers staying as they are.
class HeadlessTextMetrics : public TextMetrics {
public:
    TextSize Measure(CanvasText kind, const FlowGraphFont& font,
                     std::wstring_view text) const override;
};

}  // namespace ZML
