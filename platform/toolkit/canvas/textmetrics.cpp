#include "ZML/TextMetrics.h"

#include <algorithm>
#include <atomic>
#include <mutex>

#include "ZML/HeadlessTextMetrics.h"

namespace ZML {

namespace {

constexpr int kCaptionCharWidth = 7;
constexpr int kCaptionFontSize = 12;
constexpr int kPointCaptionFontSize = 11;

const HeadlessTextMetrics headless{};

// Geometry reads the measurer for every caption of every node, so the reading is one atomic load;
// the shared pointer beside it keeps an installed measurer alive and is only touched to install.
std::atomic<const TextMetrics*> active{&headless};

std::mutex& InstallLock() {
    static std::mutex lock;
    return lock;
}

std::shared_ptr<TextMetrics>& Installed() {
    static std::shared_ptr<TextMetrics> installed;
    return installed;
}

}  // namespace

const TextMetrics& TextMetrics::Current() {
    return *active.load(std::memory_order_acquire);
}

void TextMetrics::Install(std::shared_ptr<TextMetrics> metrics) {
    std::lock_guard<std::mutex> lock(InstallLock());
    active.store(metrics ? metrics.get() : &headless, std::memory_order_release);
    Installed() = std::move(metrics);
}

TextSize HeadlessTextMetrics::Measure(CanvasText kind, const FlowGraphFont& font,
                                      std::wstring_view text) const {
    const int charWidth =
        kind == CanvasText::Annotation ? std::max(1, (font.size + 1) / 2) : kCaptionCharWidth;
    int lines = 1;
    std::size_t longest = 0;
    std::size_t start = 0;
    for (;;) {
        const auto end = text.find(L'\n', start);
        if (end == std::wstring_view::npos) {
            longest = std::max(longest, text.size() - start);
            break;
        }
        longest = std::max(longest, end - start);
        ++lines;
        start = end + 1;
    }
    return {charWidth * static_cast<int>(longest), lines * (font.size + 4)};
}

const FlowGraphFont& CanvasCaptionFont() {
    static const FlowGraphFont font{L"", kCaptionFontSize};
    return font;
}

const FlowGraphFont& CanvasPointCaptionFont(bool italics) {
    static const FlowGraphFont plain{L"", kPointCaptionFontSize};
    static const FlowGraphFont italic{L"", kPointCaptionFontSize, false, true};
    return italics ? italic : plain;
}

}  // namespace ZML
