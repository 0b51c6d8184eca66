#pragma once

#include <memory>

#include "ZML/TextMetrics.h"

namespace ZML::Qt6 {

struct qtTextMetricsData;

// Measures canvas texts with QFontMetricsF of the fonts the canvas view draws with (CanvasQFont),
// laid out as the view lays them out. Sizes are rounded up to whole units and kept per font and
// text, since node geometry asks for the same captions over and over. A lock guards the cache, as
// canvases may be laid out on worker threads.
class QtTextMetrics : public ZML::TextMetrics {
public:
    QtTextMetrics();
    ~QtTextMetrics() override;

    ZML::TextSize Measure(ZML::CanvasText kind, const ZML::FlowGraphFont& font,
                          std::wstring_view text) const override;

private:
    std::shared_ptr<qtTextMetricsData> qtTextMetricsRecord;
};

}  // namespace ZML::Qt6
