#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ZML/FlowGraphPart.h"
#include "ZML/HeadlessTextMetrics.h"
#include "ZML/TextMetrics.h"
#include "canvastestkit.h"

using namespace canvastest;
using ZML::CanvasText;
using ZML::FlowGraphFont;
using ZML::FlowGraphNodeEx;
using ZML::FlowGraphPart;
using ZML::FlowGraphRect;
using ZML::TextMetrics;
using ZML::TextSize;

namespace {

FlowGraphFont Font(int size, bool bold = false, bool italics = false) {
    return FlowGraphFont{L"", size, bold, italics, false};
}

// A measurer with its own fixed numbers (10 units per character, 30 per line), which writes down
// what it was asked.
class WideMetrics : public TextMetrics {
public:
    struct Question {
        CanvasText kind;
        FlowGraphFont font;
        std::wstring text;
    };

    TextSize Measure(CanvasText kind, const FlowGraphFont& font,
                     std::wstring_view text) const override {
        asked->push_back({kind, font, std::wstring(text)});
        int lines = 1;
        int longest = 0;
        int current = 0;
        for (wchar_t c : text) {
            if (c == L'\n') {
                ++lines;
                current = 0;
            } else {
                longest = std::max(longest, ++current);
            }
        }
        return {10 * longest, 30 * lines};
    }

    std::shared_ptr<std::vector<Question>> asked = std::make_shared<std::vector<Question>>();
};

// Every test leaves the headless measurer in place, however it ends.
class TextMetricsTest : public ::testing::Test {
protected:
    void TearDown() override { TextMetrics::Install(nullptr); }
};

std::shared_ptr<Node> AddText(FlowGraphPart& canvas, const std::wstring& text, int size,
                              bool bold = false) {
    auto node = std::make_shared<Node>();
    node->SetTextOnly(true);
    node->SetTextFont(L"", size, bold, false, false);
    node->SetCaption(text);
    node->SetLocation(5, 7);
    canvas.AddNode(node);
    return node;
}

}  // namespace

TEST_F(TextMetricsTest, TheHeadlessMeasurerKeepsItsFixedWidths) {
    struct Row {
        CanvasText kind;
        FlowGraphFont font;
        std::wstring text;
        TextSize expected;
    };
    const std::vector<Row> table = {
        {CanvasText::Caption, ZML::CanvasCaptionFont(), L"Reproject", {63, 16}},
        {CanvasText::Caption, ZML::CanvasCaptionFont(), L"", {0, 16}},
        {CanvasText::Caption, Font(30, true), L"abc", {21, 34}},
        {CanvasText::PointCaption, ZML::CanvasPointCaptionFont(false), L"out0", {28, 15}},
        {CanvasText::PointCaption, ZML::CanvasPointCaptionFont(true), L"in0", {21, 15}},
        {CanvasText::Annotation, Font(15), L"a note", {48, 19}},
        {CanvasText::Annotation, Font(15, true, true), L"a note", {48, 19}},
        {CanvasText::Annotation, Font(10), L"ab\nabcd", {20, 28}},
        {CanvasText::Annotation, Font(10), L"abc\n", {15, 28}},
        {CanvasText::Annotation, Font(10), L"\n\n", {0, 42}},
        {CanvasText::Annotation, Font(1), L"xyz", {3, 5}},
        {CanvasText::Annotation, Font(0), L"xyz", {3, 4}},
    };
    const ZML::HeadlessTextMetrics headless;
    for (const auto& row : table) {
        const auto size = headless.Measure(row.kind, row.font, row.text);
        EXPECT_EQ(size, row.expected)
            << std::string(row.text.begin(), row.text.end()) << " at " << row.font.size << ": "
            << size.width << " x " << size.height;
        EXPECT_EQ(TextMetrics::Current().Measure(row.kind, row.font, row.text), row.expected)
            << "the headless measurer is the one in use until another is installed";
    }
}

TEST_F(TextMetricsTest, HeadlessNodeBoundsAreTheFixedWidthOnes) {
    FlowGraphPart canvas;
    auto box = AddNode(canvas, L"Reproject", 1, 1, 10, 20);
    // 16 + "in0" (21) + 16 + "out0" (28) beats the caption's 16 + 63 and the minimum of 80.
    EXPECT_EQ(box->GetBounds(), (FlowGraphRect{10, 20, 81, 46}));
    auto tall = AddNode(canvas, L"T", 2, 1, 0, 100);
    tall->SetOrientation(FlowGraphNodeEx::TopToBottom);
    // Two slots of max(24, 28 + 8); the minimum width wins. Header and a row each side.
    EXPECT_EQ(tall->GetBounds(), (FlowGraphRect{0, 100, 80, 60}));
    auto named = AddNode(canvas, L"a caption long enough to set the width", 0, 0, 0, 200);
    EXPECT_EQ(named->GetBounds().width, 16 + 7 * 38);
    named->SetIcon(L"gear.ico");
    EXPECT_EQ(named->GetBounds().width, 16 + 20 + 7 * 38);

    auto note = AddText(canvas, L"a note\non two lines", 15);
    EXPECT_EQ(note->GetBounds(), (FlowGraphRect{5, 7, 8 * 12 + 8, 2 * 19 + 4}));
    auto empty = AddText(canvas, L"", 15);
    EXPECT_EQ(empty->GetBounds(), (FlowGraphRect{5, 7, 18, 23}));
}

TEST_F(TextMetricsTest, AnInstalledMeasurerSizesCaptionsPointsAndTexts) {
    FlowGraphPart canvas;
    auto box = AddNode(canvas, L"abcdefghij", 1, 1);
    auto point = In(box);
    point->SetItalics(true);
    auto note = AddText(canvas, L"first\nthe second\nthird", 20, true);
    const auto headlessBox = box->GetBounds();
    const auto headlessNote = note->GetBounds();

    auto metrics = std::make_shared<WideMetrics>();
    auto asked = metrics->asked;
    TextMetrics::Install(metrics);
    EXPECT_EQ(&TextMetrics::Current(), metrics.get());
    // The caption (16 + 100) is wider than the points' 16 + 30 + 16 + 40.
    EXPECT_EQ(box->GetBounds(), (FlowGraphRect{0, 0, 116, 46}));
    // The widest line of three, and the measured height of all three, plus the padding.
    EXPECT_EQ(note->GetBounds(), (FlowGraphRect{5, 7, 100 + 8, 90 + 4}));

    bool sawCaption = false;
    bool sawItalicPoint = false;
    bool sawPlainPoint = false;
    bool sawText = false;
    for (const auto& question : *asked) {
        switch (question.kind) {
            case CanvasText::Caption:
                sawCaption = true;
                EXPECT_EQ(question.font, ZML::CanvasCaptionFont());
                EXPECT_EQ(question.text, L"abcdefghij");
                break;
            case CanvasText::PointCaption:
                if (question.text == L"in0") {
                    sawItalicPoint = true;
                    EXPECT_EQ(question.font, ZML::CanvasPointCaptionFont(true));
                } else {
                    sawPlainPoint = true;
                    EXPECT_EQ(question.text, L"out0");
                    EXPECT_EQ(question.font, ZML::CanvasPointCaptionFont(false));
                }
                break;
            case CanvasText::Annotation:
                sawText = true;
                EXPECT_EQ(question.font, Font(20, true));
                EXPECT_EQ(question.text, L"first\nthe second\nthird");
                break;
        }
    }
    EXPECT_TRUE(sawCaption && sawItalicPoint && sawPlainPoint && sawText);

    // Wider point captions move the points' side of the box, and the points with it.
    In(box)->SetCaption(L"a much longer input");
    EXPECT_EQ(box->GetBounds().width, 16 + 190 + 16 + 40);
    EXPECT_EQ(box->GetPointPosition(Out(box)).x, box->GetBounds().width);

    TextMetrics::Install(nullptr);
    EXPECT_NE(&TextMetrics::Current(), metrics.get());
    In(box)->SetCaption(L"in0");
    EXPECT_EQ(box->GetBounds(), headlessBox) << "removing the measurer restores the headless sizes";
    EXPECT_EQ(note->GetBounds(), headlessNote);
}

TEST_F(TextMetricsTest, ANarrowMeasurerNeverShrinksBelowTheMinimums) {
    class Zero : public TextMetrics {
    public:
        TextSize Measure(CanvasText, const FlowGraphFont&, std::wstring_view) const override {
            return {0, 0};
        }
    };
    TextMetrics::Install(std::make_shared<Zero>());
    FlowGraphPart canvas;
    auto box = AddNode(canvas, L"anything", 1, 1);
    EXPECT_EQ(box->GetBounds(), (FlowGraphRect{0, 0, 80, 46}));
    auto note = AddText(canvas, L"anything", 15);
    EXPECT_EQ(note->GetBounds(), (FlowGraphRect{5, 7, 18, 4}));
}
