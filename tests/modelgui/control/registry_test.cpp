// The registry of live editors, batch-update tokens and the process-wide callback tables.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "modelgui/MessageManager.h"
#include "modelgui/UndoRedoManager.h"
#include "recordingcontrol.h"

namespace {

using quarn::modelgui::SolutionBuilderControl;
using quarn::modelgui::testing::RecordingControl;

bool Registered(const SolutionBuilderControl* control) {
    const auto editors = SolutionBuilderControl::GetAllEditors();
    return std::find(editors.begin(), editors.end(), control) != editors.end();
}

TEST(EditorRegistry, ControlsAreListedWhileAliveInAddressOrder) {
    auto canvas = std::make_shared<ZML::FlowGraphPart>();
    auto first = std::make_unique<RecordingControl>(canvas);
    auto second = std::make_unique<RecordingControl>(canvas);
    EXPECT_TRUE(Registered(first.get()));
    EXPECT_TRUE(Registered(second.get()));
    const auto editors = SolutionBuilderControl::GetAllEditors();
    EXPECT_TRUE(std::is_sorted(editors.begin(), editors.end(), std::less<>()));
    EXPECT_EQ(first->GetFlowGraphPart(), canvas);
    EXPECT_EQ(second->GetFlowGraphPart(), canvas);

    const auto* gone = first.get();
    first.reset();
    EXPECT_FALSE(Registered(gone));
    EXPECT_TRUE(Registered(second.get()));
}

TEST(EditorRegistry, ManagersOutliveTheControlWhileHeld) {
    std::shared_ptr<quarn::modelgui::MessageManager> messages;
    std::shared_ptr<quarn::modelgui::UndoRedoManager> history;
    {
        RecordingControl control;
        messages = control.GetMessageManager();
        history = control.GetUndoRedoManager();
        ASSERT_NE(messages, nullptr);
        ASSERT_NE(history, nullptr);
        EXPECT_EQ(control.GetMessageManager(), messages);
        // The empty model is the first step already: nothing to undo.
        EXPECT_FALSE(history->CanUndo());
    }
    EXPECT_TRUE(messages->GetMessages().empty());
}

TEST(BatchUpdate, OneCompletionWhenTheLastCopyGoes) {
    for (const bool changed : {true, false}) {
        RecordingControl control;
        auto token = control.BatchUpdateInScope(changed);
        EXPECT_EQ(control.calls, std::vector<std::string>{"PrepareForChange(true)"});
        auto copy = token;
        token.reset();
        EXPECT_EQ(control.calls.size(), 1u);
        copy.reset();
        const std::string completed =
            std::string("ChangeCompleted(true, ") + (changed ? "true" : "false") + ")";
        EXPECT_EQ(control.calls, (std::vector<std::string>{"PrepareForChange(true)", completed}));
    }
}

TEST(BatchUpdate, NestedScopesCompleteInnerFirst) {
    RecordingControl control;
    {
        const auto outer = control.BatchUpdateInScope(true);
        { const auto inner = control.BatchUpdateInScope(false); }
    }
    EXPECT_EQ(control.calls, (std::vector<std::string>{
                                 "PrepareForChange(true)", "PrepareForChange(true)",
                                 "ChangeCompleted(true, false)", "ChangeCompleted(true, true)"}));
}

TEST(BatchUpdate, TokenOutlivingItsControlCallsNothing) {
    std::shared_ptr<void> token;
    {
        RecordingControl control;
        token = control.BatchUpdateInScope(true);
    }
    EXPECT_NO_THROW(token.reset());
}

// Both tables follow the same rules; each row drives one of them.
struct CallbackTable {
    const char* name;
    std::function<void(void*, std::function<void()>)> add;
    std::function<void(void*)> remove;
    std::function<void()> call;
};

std::vector<CallbackTable> Tables() {
    return {
        {"mouse event",
         [](void* owner, std::function<void()> fn) {
             SolutionBuilderControl::AddMouseEventCB(
                 owner, fn ? std::function<void(std::uint32_t)>([fn](std::uint32_t) { fn(); })
                           : std::function<void(std::uint32_t)>());
         },
         [](void* owner) { SolutionBuilderControl::RemoveMouseEventCB(owner); },
         [] { SolutionBuilderControl::CallMouseEventCB(4); }},
        {"operator changed",
         [](void* owner, std::function<void()> fn) {
             SolutionBuilderControl::AddOperatorChangedCB(owner, std::move(fn));
         },
         [](void* owner) { SolutionBuilderControl::RemoveOperatorChangedCB(owner); },
         [] { SolutionBuilderControl::CallOperatorChangedCB(); }},
    };
}

TEST(CallbackTables, ReplaceRemoveAndCallInOwnerOrder) {
    for (const auto& table : Tables()) {
        SCOPED_TRACE(table.name);
        int owners[3] = {};
        void* low = &owners[0];
        void* mid = &owners[1];
        void* high = &owners[2];
        std::vector<std::string> heard;
        table.add(high, [&] { heard.emplace_back("high"); });
        table.add(low, [&] { heard.emplace_back("low (first)"); });
        table.add(low, [&] { heard.emplace_back("low"); });
        table.add(mid, [&] { heard.emplace_back("mid"); });
        int unknown = 0;
        table.remove(&unknown);
        table.call();
        EXPECT_EQ(heard, (std::vector<std::string>{"low", "mid", "high"}));

        heard.clear();
        table.remove(mid);
        table.call();
        EXPECT_EQ(heard, (std::vector<std::string>{"low", "high"}));

        // An empty function stops the walk where it stands.
        heard.clear();
        table.add(mid, nullptr);
        EXPECT_THROW(table.call(), std::bad_function_call);
        EXPECT_EQ(heard, std::vector<std::string>{"low"});

        for (void* owner : {low, mid, high}) table.remove(owner);
        heard.clear();
        table.call();
        EXPECT_TRUE(heard.empty());
    }
}

TEST(CallbackTables, MouseCodesArePassedOnUnchanged) {
    int owner = 0;
    std::vector<std::uint32_t> codes;
    SolutionBuilderControl::AddMouseEventCB(
        &owner, [&codes](std::uint32_t code) { codes.push_back(code); });
    for (const std::uint32_t code : {1u, 2u, 3u, 4u, 0xFFFFFFFFu})
        SolutionBuilderControl::CallMouseEventCB(code);
    SolutionBuilderControl::RemoveMouseEventCB(&owner);
    EXPECT_EQ(codes, (std::vector<std::uint32_t>{1u, 2u, 3u, 4u, 0xFFFFFFFFu}));
}

}  // namespace
