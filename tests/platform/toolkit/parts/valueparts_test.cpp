#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "QuarnLog/Exception.h"
#include "ZML/EditText.h"
#include "ZML/Filename.h"
#include "ZML/Number.h"
#include "ZML/PopupList.h"
#include "ZML/ScrollList.h"
#include "qzml/Parts.h"

using namespace ZML;

TEST(NumberPart, UserEntryFollowsLimitsAndProperties) {
    struct Case {
        const wchar_t* text;
        bool allowBlank;
        bool whole;
        bool accepted;
        const wchar_t* shown;
    };
    const Case cases[] = {
        {L"12", false, false, true, L"12.00"},   {L" 2.5 ", false, false, true, L"2.50"},
        {L"2.5", false, true, false, L"7.00"},   {L"3", false, true, true, L"3.00"},
        {L"", false, false, false, L"7.00"},     {L"", true, false, true, L""},
        {L"abc", true, false, false, L"7.00"},   {L"12x", false, false, false, L"7.00"},
        {L"101", false, false, false, L"7.00"},  {L"-1", false, false, false, L"7.00"},
        {L"100", false, false, true, L"100.00"},
    };
    for (const auto& c : cases) {
        auto number = std::make_shared<Number>("n");
        number->LimitsSet(0, 100);
        number->FormatSet("8.2");
        number->SetValue(7);
        if (c.allowBlank) number->Properties().Set(L"AllowBlank", L"Yes");
        if (c.whole) number->Properties().Set(L"WholeNumber", L"Yes");
        int changes = 0;
        number->OnMessage("valuechanged", [&changes](const Event&) { ++changes; });
        EXPECT_EQ(number->UserEnter(c.text), c.accepted) << "entry '" << c.text << "'";
        EXPECT_EQ(number->Text(), c.shown) << "entry '" << c.text << "'";
        EXPECT_EQ(changes, c.accepted ? 1 : 0);
    }
}

TEST(NumberPart, StepsMoveByTheStepWithinTheLimitsAndAnnounceOnlyMoves) {
    struct Case {
        const char* name;
        double step;  // 0: the default
        bool blank;
        double start;
        int steps;
        bool moved;
        const wchar_t* shown;
    };
    const Case cases[] = {
        {"default step up", 0, false, 7, 1, true, L"8.00"},
        {"default step down twice", 0, false, 7, -2, true, L"5.00"},
        {"real step", 0.25, false, 7, 3, true, L"7.75"},
        {"clamped at the top", 0, false, 9.5, 1, true, L"10.00"},
        {"held at the top", 0, false, 10, 1, false, L"10.00"},
        {"held at the bottom", 2, false, -5, -1, false, L"-5.00"},
        {"blank counts from zero", 0, true, 0, -1, true, L"-1.00"},
        {"no steps", 0, false, 7, 0, false, L"7.00"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto number = std::make_shared<Number>("n");
        number->LimitsSet(-5, 10);
        number->FormatSet("8.2");
        EXPECT_EQ(number->Step(), 1) << "the default step";
        if (c.step > 0) number->StepSet(c.step);
        number->SetValue(c.start);
        if (c.blank) number->SetBlank();
        std::vector<std::wstring> announced;
        number->OnMessage("valuechanged",
                          [&announced](const Event& e) { announced.push_back(e.text); });
        EXPECT_EQ(number->UserStep(c.steps), c.moved);
        EXPECT_EQ(number->Text(), c.shown);
        EXPECT_EQ(announced,
                  c.moved ? std::vector<std::wstring>{c.shown} : std::vector<std::wstring>{});
    }
}

TEST(NumberPart, WholeNumberFieldsStepByWholeSteps) {
    struct Case {
        double step;
        int steps;
        const wchar_t* shown;
    };
    for (const auto& c : {Case{0.5, 1, L"4"}, Case{0.5, -1, L"2"}, Case{0.25, -3, L"0"},
                          Case{2.4, 1, L"5"}, Case{2.6, -1, L"0"}}) {
        SCOPED_TRACE(c.step);
        auto number = std::make_shared<Number>("n");
        number->Properties().Set(L"WholeNumber", L"Yes");
        number->LimitsSet(-10, 10);
        number->FormatSet("4.0");
        number->StepSet(c.step);
        number->SetValue(3);
        EXPECT_TRUE(number->UserStep(c.steps));
        EXPECT_EQ(number->Text(), c.shown);
    }
}

TEST(NumberPart, InfoUpdatesAndFormatThroughTheFreeFunctions) {
    auto number = std::make_shared<Number>("n");
    std::shared_ptr<Part> part = number;
    EXPECT_EQ(number->Min(), -static_cast<double>(std::numeric_limits<float>::max()));
    EXPECT_TRUE(qeui_UpdateNumberInfo(part, "min", 0));
    EXPECT_TRUE(qeui_UpdateNumberInfo(part, "max", 50));
    EXPECT_TRUE(qeui_UpdateNumberInfo(part, "delta", 2.5));
    EXPECT_FALSE(qeui_UpdateNumberInfo(part, "delta", 0));
    EXPECT_FALSE(qeui_UpdateNumberInfo(part, "min", 60));
    EXPECT_FALSE(qeui_UpdateNumberInfo(part, "colour", 1));
    EXPECT_FALSE(qeui_UpdateNumberInfo(std::make_shared<EditText>("e"), "min", 0));
    EXPECT_EQ(number->Min(), 0);
    EXPECT_EQ(number->Max(), 50);
    EXPECT_EQ(number->Step(), 2.5);

    EXPECT_TRUE(qzml_NumberPartFormatSet(part, "10.0"));
    EXPECT_FALSE(qzml_NumberPartFormatSet(part, "ten"));
    EXPECT_EQ(number->Format(), "10.0");
    number->SetValue(3);
    EXPECT_TRUE(number->UserStep(2));
    EXPECT_EQ(number->Text(), L"8");
    number->SetBlank();
    EXPECT_TRUE(std::isnan(number->Value()));
}

TEST(EditTextPart, TypingReplacesTheSelectionAndFiresInOrder) {
    auto edit = std::make_shared<EditText>("expr");
    edit->SetUnicodeText(L"$a + $b");
    edit->SetSelection(7, 5);  // "$b", given backwards
    std::wstring log;
    edit->OnMessage("charinput", [&log](const Event& e) { log += L"c" + e.text; });
    edit->OnMessage("input", [&log](const Event&) { log += L"|input"; });
    edit->OnMessage("valuechanged", [&log](const Event& e) { log += L"|changed:" + e.text; });
    EXPECT_TRUE(edit->UserType(L"$c"));
    EXPECT_EQ(edit->GetUnicodeText(), L"$a + $c");
    EXPECT_EQ(log, L"c$cc|input|changed:$a + $c");
    int start = -1, end = -1;
    EXPECT_TRUE(qzml_TextGetSelectionPosition(edit, start, end));
    EXPECT_EQ(start, 7);
    EXPECT_EQ(end, 7);
    EXPECT_FALSE(qzml_TextGetSelectionPosition(std::make_shared<Number>("n"), start, end));

    edit->ReadOnlySet(true);
    EXPECT_FALSE(edit->UserType(L"x"));
}

TEST(PopupListPart, KeepsTheValueWhenTheListStillHoldsIt) {
    auto popup = std::make_shared<PopupList>("p");
    popup->ValueListSet({L"", L"true", L"false"});
    EXPECT_TRUE(popup->SetValue(L"false"));
    EXPECT_FALSE(popup->SetValue(L"maybe"));
    EXPECT_EQ(popup->Value(), L"false");
    popup->ValueListSet({L"", L"false"});
    EXPECT_EQ(popup->Value(), L"false");
    EXPECT_EQ(popup->SelectedPos(), 1);
    popup->ValueListSet({L"", L"yes"});
    EXPECT_EQ(popup->Value(), L"");
    std::wstring chosen;
    popup->OnMessage("valuechanged", [&chosen](const Event& e) { chosen = e.text; });
    EXPECT_TRUE(popup->UserChoose(1));
    EXPECT_EQ(chosen, L"yes");
    EXPECT_FALSE(popup->UserChoose(5));
}

TEST(FilenamePart, KeepsBothKindsOfTypeDefinitions) {
    auto file = std::make_shared<Filename>("f");
    file->ModeSet(FilenameOutput);
    EXPECT_THROW(file->ModeSet(7), QuarnLog::Exception);
    file->TypeDefAdd(L"raster", nullptr, 2, 1, 2, 3, 3);
    file->TypeDefAdd(L"vector");
    file->Select(L"/data/*.img");
    auto types = file->TypeDefs();
    ASSERT_EQ(types.size(), 2u);
    EXPECT_TRUE(types[0].hasFlags);
    EXPECT_EQ(types[0].flags, (std::array<int, 5>{2, 1, 2, 3, 3}));
    EXPECT_FALSE(types[1].hasFlags);
    EXPECT_EQ(file->GetPath(), L"/data/*.img");
    EXPECT_EQ(file->Mode(), FilenameOutput);
}

TEST(ScrollListPart, SelectionByPositionAndClicks) {
    auto list = std::make_shared<ScrollList>("portList");
    list->AddRow(L"Input1");
    list->AddRow(L"Input2");
    EXPECT_EQ(list->GetSelectedPos(), -1);
    EXPECT_TRUE(list->SelectByPos(1));
    EXPECT_FALSE(list->SelectByPos(2));
    EXPECT_EQ(list->GetSelectedPos(), 1);
    std::vector<std::string> events;
    list->OnMessage("mousedown", [&events](const Event& e) {
        events.push_back("down" + std::to_string(std::any_cast<int>(e.detail)));
    });
    list->OnMessage("SelectionChanged", [&events](const Event&) { events.push_back("sel"); });
    list->OnMessage("doubleclick", [&events](const Event&) { events.push_back("double"); });
    list->UserClick(0);
    list->UserClick(0);
    list->UserDoubleClick(1);
    EXPECT_EQ(events, (std::vector<std::string>{"down0", "sel", "down0", "double"}));
    list->ClearRows();
    EXPECT_EQ(list->GetSelectedPos(), -1);
}
