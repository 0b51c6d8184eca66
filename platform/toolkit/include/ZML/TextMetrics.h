#pragma once

#include <memory>
#include <string_view>

#include "ZML/FlowGraphFont.h"

namespace ZML {

// The kinds of text the canvas lays out. A measurer that knows real fonts needs only the font;
// the headless one keeps a rule per kind.
enum class CanvasText { Caption, PointCaption, Annotation };

// The room a text takes: the advance of its widest line and the height of all its lines, in
// canvas units (pixels at scale 1).
struct TextSize {
    int width = 0;
    int height = 0;
    bool operator==(const TextSize&) const = default;
};

// How the canvas measures text. The core has no font engine, so a windowing backend installs a
// measurer that uses the fonts it draws with; until then (and after it is removed) the headless
// measurer (HeadlessTextMetrics) answers. Node geometry asks for every caption each time a node's
// bounds are wanted, so a measurer must be cheap or cache what it measured.
// Canvases may be laid out on several threads at once, so a measurer answers from any thread;
// installing one is done on the user-interface thread while no canvas is being measured.
class TextMetrics {
public:
    virtual ~TextMetrics() = default;

    // The size of `text` drawn in `font`; lines end at '\n'. `kind` says what the text is.
    virtual TextSize Measure(CanvasText kind, const FlowGraphFont& font,
                             std::wstring_view text) const = 0;

    // The measurer in use; the headless one when none is installed.
    static const TextMetrics& Current();
    // Makes `metrics` the measurer in use; null restores the headless one.
    static void Install(std::shared_ptr<TextMetrics> metrics);
};

// The fonts the canvas writes node captions and point captions in (the default family, 12 and 11
// pixels). Views draw with these, so that what geometry measured is what is shown.
const FlowGraphFont& CanvasCaptionFont();
const FlowGraphFont& CanvasPointCaptionFont(bool italics);

}  // namespace ZML
