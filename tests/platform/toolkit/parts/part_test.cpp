#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "QuarnLog/Exception.h"
#include "ZML/Button.h"
#include "ZML/EditText.h"
#include "ZML/Frame.h"
#include "ZML/Group.h"
#include "ZML/Label.h"
#include "ZML/PartPeer.h"

using namespace ZML;

TEST(PartEvents, HandlersRunInRegistrationOrderWithNameAndSource) {
    auto button = std::make_shared<Button>("ok");
    std::vector<std::string> calls;
    button->OnMessage("mousedown", [&calls](const Event& e) {
        calls.push_back("first:" + e.name + ":" + e.source->Name());
    });
    button->OnMessage("mouseup", [&calls](const Event&) { calls.push_back("up"); });
    button->OnMessage("mousedown", [&calls](const Event& e) {
        calls.push_back("second:" + std::to_string(static_cast<int>(e.button)));
    });

    EXPECT_TRUE(button->Press());
    EXPECT_EQ(calls, (std::vector<std::string>{"first:mousedown:ok", "second:1", "up"}));
    EXPECT_FALSE(button->FireMessage("doubleclick"));
}

TEST(PartEvents, BindingDuringDispatchTakesEffectOnTheNextFire) {
    auto label = std::make_shared<Label>("l");
    int late = 0;
    HandlerId self = 0;
    int early = 0;
    self = label->OnMessage("valuechanged", [&](const Event&) {
        ++early;
        label->OnMessage("valuechanged", [&late](const Event&) { ++late; });
        label->RemoveMessage(self);
    });
    label->FireMessage("valuechanged");
    EXPECT_EQ(early, 1);
    EXPECT_EQ(late, 0);
    label->FireMessage("valuechanged");
    EXPECT_EQ(early, 1);
    EXPECT_EQ(late, 1);
}

TEST(PartEvents, HandlerExceptionStopsDispatchAndReachesCaller) {
    auto label = std::make_shared<Label>("l");
    bool second = false;
    label->OnMessage("input", [](const Event&) { QUARN_THROW("handler failed"); });
    label->OnMessage("input", [&second](const Event&) { second = true; });
    EXPECT_THROW(label->FireMessage("input"), QuarnLog::Exception);
    EXPECT_FALSE(second);
}

TEST(PartEvents, UserGesturesIgnoreDisabledPartsAndDisabledAncestors) {
    auto frame = std::make_shared<Frame>("f");
    auto group = std::make_shared<Group>("g");
    auto button = std::make_shared<Button>("b");
    frame->Add(group);
    group->Add(button);
    int presses = 0;
    button->OnMessage("mousedown", [&presses](const Event&) { ++presses; });

    struct Case {
        bool groupEnabled;
        bool buttonEnabled;
        bool buttonVisible;
        bool delivered;
    };
    for (const Case& c : {Case{true, true, true, true}, Case{false, true, true, false},
                          Case{true, false, true, false}, Case{true, true, false, false}}) {
        group->EnableSet(c.groupEnabled);
        button->EnableSet(c.buttonEnabled);
        c.buttonVisible ? button->Show() : button->Hide();
        presses = 0;
        EXPECT_EQ(button->Press(), c.delivered);
        EXPECT_EQ(presses, c.delivered ? 1 : 0);
        // Code may always fire, whatever the state.
        EXPECT_TRUE(button->FireMessage("mousedown"));
    }
}

TEST(PartTree, FindsDescendantsByNameAndKind) {
    auto frame = std::make_shared<Frame>("settings");
    auto group = std::make_shared<Group>("g");
    auto edit = std::make_shared<EditText>("expr");
    frame->Add(group);
    group->Add(edit);

    EXPECT_EQ(frame->Find<EditText>("expr"), edit);
    EXPECT_EQ(edit->Parent(), group);
    EXPECT_EQ(group->Parent(), frame);
    EXPECT_EQ(frame->TryFind<Button>("expr"), nullptr);

    try {
        frame->Find<EditText>("missing");
        FAIL() << "no exception";
    } catch (const QuarnLog::Exception& e) {
        EXPECT_EQ(e.Message(), "No part named \"missing\" in \"settings\".");
    }
    try {
        frame->Find<Button>("expr");
        FAIL() << "no exception";
    } catch (const QuarnLog::Exception& e) {
        EXPECT_NE(e.Message().find("\"expr\" of \"settings\" is a edittext"), std::string::npos)
            << e.Message();
    }
}

TEST(PartTree, RefusesCyclesAndMovesAChildToItsNewParent) {
    auto a = std::make_shared<Group>("a");
    auto b = std::make_shared<Group>("b");
    a->Add(b);
    EXPECT_THROW(b->Add(a), QuarnLog::Exception);
    EXPECT_THROW(a->Add(a), QuarnLog::Exception);
    auto c = std::make_shared<Group>("c");
    c->Add(b);
    EXPECT_TRUE(a->Children().empty());
    EXPECT_EQ(b->Parent(), c);
}

TEST(PartLayout, LockedChildrenFollowTheirParentsResize) {
    struct Case {
        unsigned lock;
        Rect after;
    };
    const Rect before{10, 20, 100, 30};
    // The parent grows from 400 x 300 to 500 x 350.
    const std::vector<Case> cases{
        {LockNone, {10, 20, 100, 30}},
        {LockLeft | LockTop, {10, 20, 100, 30}},
        {LockHorizontal, {10, 20, 200, 30}},
        {LockRight, {110, 20, 100, 30}},
        {LockRight | LockBottom, {110, 70, 100, 30}},
        {LockAll, {10, 20, 200, 80}},
    };
    for (const auto& c : cases) {
        auto parent = std::make_shared<Group>("p");
        parent->GeometrySet(0, 0, 400, 300);
        auto child = std::make_shared<Label>("c");
        child->GeometrySet(before.x, before.y, before.width, before.height);
        child->LockSet(c.lock);
        parent->Add(child);
        parent->GeometrySet(0, 0, 500, 350);
        EXPECT_EQ(child->Geometry(), c.after) << "lock " << c.lock;
    }
}

TEST(PartState, RefusesBadTitlePositionsAndSizes) {
    Label label("l");
    EXPECT_THROW(label.TitleWhereSet(0), QuarnLog::Exception);
    EXPECT_THROW(label.TitleWhereSet(10), QuarnLog::Exception);
    label.TitleWhereSet(TitleAboveLeft);
    EXPECT_EQ(label.TitleWhere(), 7);
    EXPECT_THROW(label.GeometrySet(0, 0, -1, 5), QuarnLog::Exception);
}

TEST(PartState, PropertyListKeepsOrderAndReadsYes) {
    Label label("l");
    label.Properties().PropertyAt(L"AllowBlank") = L"Yes";
    label.Properties().Set(L"WholeNumber", L"no");
    label.Properties().PropertyAt(L"AllowBlank") += L"";
    auto entries = label.Properties().Entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].first, L"AllowBlank");
    EXPECT_TRUE(label.Properties().IsYes(L"AllowBlank"));
    EXPECT_FALSE(label.Properties().IsYes(L"WholeNumber"));
    EXPECT_FALSE(label.Properties().IsYes(L"Missing"));
}

TEST(PartState, PeerHearsOfEachChange) {
    struct RecordingPeer : PartPeer {
        std::vector<PartChange> changes;
        void Refresh(Part&, PartChange change) override { changes.push_back(change); }
    };
    auto peer = std::make_shared<RecordingPeer>();
    auto edit = std::make_shared<EditText>("e");
    edit->PeerSet(peer);
    edit->TitleSet(L"Expression:");
    edit->Disable();
    edit->SetUnicodeText(L"1 + 2");
    EXPECT_EQ(peer->changes, (std::vector<PartChange>{PartChange::All, PartChange::Title,
                                                      PartChange::Enabled, PartChange::Value}));
}
