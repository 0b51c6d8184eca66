#include "qttextmetrics.h"

#include <QFontMetricsF>
#include <algorithm>
#include <cmath>
#include <functional>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "ZMLQt/CanvasFont.h"
#include "qtcolor.h"

namespace ZML::Qt6 {

namespace {

// Lets the caches be searched with the view the geometry passes, without copying it.
struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::wstring_view text) const noexcept {
        return std::hash<std::wstring_view>{}(text);
    }
};

// Past this many texts of one font the cache starts again, so that a long session of edited
// annotations does not grow it without end.
constexpr std::size_t kMaxCachedTexts = 1 << 16;

}  // namespace

struct qtTextMetricsData {
    struct FontCache {
        ZML::FlowGraphFont font;
        QFontMetricsF metrics;
        std::unordered_map<std::wstring, ZML::TextSize, TextHash, std::equal_to<>> sizes;
    };
    // A canvas uses few fonts (the captions' and those of its annotations): a list is quickest.
    std::vector<FontCache> fonts;
    std::mutex lock;

    FontCache& CacheFor(const ZML::FlowGraphFont& font) {
        for (auto& cache : fonts) {
            if (cache.font == font) {
                return cache;
            }
        }
        return fonts.emplace_back(FontCache{font, QFontMetricsF(CanvasQFont(font)), {}});
    }
};

QFont CanvasQFont(const ZML::FlowGraphFont& font) {
    QFont result;
    if (!font.name.empty()) {
        result.setFamily(ToQString(font.name));
    }
    result.setPixelSize(std::max(1, font.size));
    result.setBold(font.bold);
    result.setItalic(font.italics);
    result.setUnderline(font.underline);
    return result;
}

QtTextMetrics::QtTextMetrics() : qtTextMetricsRecord(std::make_shared<qtTextMetricsData>()) {}

QtTextMetrics::~QtTextMetrics() = default;

ZML::TextSize QtTextMetrics::Measure(ZML::CanvasText, const ZML::FlowGraphFont& font,
                                     std::wstring_view text) const {
    std::lock_guard<std::mutex> guard(qtTextMetricsRecord->lock);
    auto& cache = qtTextMetricsRecord->CacheFor(font);
    if (auto found = cache.sizes.find(text); found != cache.sizes.end()) {
        return found->second;
    }
    // The view draws every canvas text into a rectangle, aligned and broken at line ends; the
    // same layout measured here gives the room it takes.
    const QString qtext = QString::fromWCharArray(text.data(), static_cast<qsizetype>(text.size()));
    const QRectF laid =
        cache.metrics.boundingRect(QRectF(), ::Qt::AlignLeft | ::Qt::AlignTop, qtext);
    const ZML::TextSize size{static_cast<int>(std::ceil(laid.width())),
                             static_cast<int>(std::ceil(laid.height()))};
    if (cache.sizes.size() >= kMaxCachedTexts) {
        cache.sizes.clear();
    }
    cache.sizes.emplace(std::wstring(text), size);
    return size;
}

}  // namespace ZML::Qt6
