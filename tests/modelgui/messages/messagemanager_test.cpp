// The message list: formatting of reports, the repeated-report rule, listeners and their tokens,
// reports from other threads, and the hook that follows the current model.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "modelgui/MessageManager.h"

namespace {

using quarn::modelgui::MessageManager;
using Velmar::Lattix::Issue;
using Velmar::Lattix::Model;
using Velmar::Lattix::Operator;
using Velmar::Lattix::Port;
using Velmar::Lattix::PortDirection;
using Severity = Velmar::Lattix::Issue::Severity;

std::vector<std::wstring> Texts(const MessageManager& manager) {
    std::vector<std::wstring> texts;
    for (const auto& message : manager.GetMessages()) texts.push_back(message->GetText());
    return texts;
}

// ---- formatting

struct formatCase {
    std::wstring raw;
    std::wstring text;
};

class MessageFormatting : public testing::TestWithParam<formatCase> {};

TEST_P(MessageFormatting, FormatsTheRawText) {
    const MessageManager::Message message(nullptr, nullptr, GetParam().raw, L"key",
                                          Severity::Warning);
    EXPECT_EQ(message.GetText(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Reports, MessageFormatting,
    testing::Values(formatCase{L"", L""},                              //
                    formatCase{L"File not found", L"File not found"},  //
                    formatCase{L"args", L"args"},                      //
                    formatCase{L"ARGS!", L"ARGS!"},                    //
                    formatCase{L"x\nargs", L"x"},                      //
                    formatCase{L"args\nargs!", L""},                   //
                    formatCase{L"Input1\nargs\nFile not found", L"File not found (Input1)"},
                    formatCase{L"a\nb\nc", L"c (a b)"},                 //
                    formatCase{L"p1\nARGS!\np2\nmsg", L"msg (p1 p2)"},  //
                    formatCase{L"Args\nonly", L"only"},                 //
                    formatCase{L"a\n", L" (a)"},                        //
                    formatCase{L"arguments\nx", L"x (arguments)"},      //
                    formatCase{L"one two\nthree four", L"three four (one two)"}));

TEST(MessageFields, KeepsHelpKeySeverityAndWeakReferences) {
    auto op = std::make_shared<Operator>(L"TAMARIN", L"Add");
    auto port = op->AddPort(L"Input1", PortDirection::Input);
    const MessageManager::Message message(op, port, L"text", L"help.key", Severity::Error);
    EXPECT_EQ(message.GetHelpKey(), L"help.key");
    EXPECT_EQ(message.GetSeverity(), Severity::Error);
    EXPECT_EQ(message.GetOperator(), op);
    EXPECT_EQ(message.GetPort(), port);

    // The message keeps neither alive.
    port.reset();
    op.reset();
    EXPECT_EQ(message.GetOperator(), nullptr);
    EXPECT_EQ(message.GetPort(), nullptr);

    const MessageManager::Message none(nullptr, nullptr, L"model", L"", Severity::Info);
    EXPECT_EQ(none.GetOperator(), nullptr);
    EXPECT_EQ(none.GetPort(), nullptr);
}

// ---- repeated reports

// A report in a table: which of the fixture's operators and ports (-1 for none), the raw text and
// the severity.
struct report {
    int op;
    int port;
    std::wstring text;
    Severity severity;
};

struct duplicateCase {
    const char* name;
    std::vector<report> reports;
    std::vector<std::wstring> texts;  // the list afterwards, oldest first
};

class MessageDuplicates : public testing::TestWithParam<duplicateCase> {
protected:
    void SetUp() override {
        for (int i = 0; i < 2; ++i) {
            ops.push_back(std::make_shared<Operator>(L"TAMARIN", L"Op" + std::to_wstring(i)));
            ports.push_back(ops.back()->AddPort(L"In", PortDirection::Input));
        }
    }
    std::vector<std::shared_ptr<Operator>> ops;
    std::vector<std::shared_ptr<Port>> ports;
};

TEST_P(MessageDuplicates, KeepsOneMessagePerRepeatedReport) {
    MessageManager manager;
    for (const auto& r : GetParam().reports)
        manager.AddMessage(r.op < 0 ? nullptr : ops[r.op], r.port < 0 ? nullptr : ports[r.port],
                           r.text, L"", r.severity);
    EXPECT_EQ(Texts(manager), GetParam().texts);
}

const auto E = Severity::Error;
const auto W = Severity::Warning;

INSTANTIATE_TEST_SUITE_P(
    Reports, MessageDuplicates,
    testing::Values(
        duplicateCase{"SameReportMovesToTheEnd",
                      {{0, 0, L"a", E}, {0, 0, L"b", E}, {0, 0, L"a", E}},
                      {L"b", L"a"}},
        duplicateCase{"OtherSeverityIsKept", {{0, 0, L"a", E}, {0, 0, L"a", W}}, {L"a", L"a"}},
        duplicateCase{"OtherOperatorIsKept", {{0, -1, L"a", E}, {1, -1, L"a", E}}, {L"a", L"a"}},
        duplicateCase{"OtherPortIsKept", {{0, 0, L"a", E}, {0, 1, L"a", E}}, {L"a", L"a"}},
        duplicateCase{"PortAgainstNoPortIsKept", {{0, 0, L"a", E}, {0, -1, L"a", E}}, {L"a", L"a"}},
        duplicateCase{"ModelReportsRepeat",
                      {{-1, -1, L"m", W}, {0, -1, L"x", W}, {-1, -1, L"m", W}},
                      {L"x", L"m"}},
        duplicateCase{"TextCaseMatters", {{0, 0, L"a", E}, {0, 0, L"A", E}}, {L"a", L"A"}},
        // A multi-line report is stored formatted, so the raw text never matches it again.
        duplicateCase{"MultiLineReportsAreNeverRepeats",
                      {{0, 0, L"p\nmsg", E}, {0, 0, L"p\nmsg", E}},
                      {L"msg (p)", L"msg (p)"}},
        // ... but a single-line report that reads like the stored form does.
        duplicateCase{"SingleLineMatchesFormattedText",
                      {{0, 0, L"p\nmsg", E}, {0, 0, L"z", E}, {0, 0, L"msg (p)", E}},
                      {L"z", L"msg (p)"}},
        duplicateCase{"ArgsAloneRepeats", {{0, 0, L"args", E}, {0, 0, L"args", E}}, {L"args"}},
        duplicateCase{"EmptyTextsRepeat", {{0, 0, L"", E}, {0, 0, L"", E}}, {L""}}),
    [](const testing::TestParamInfo<duplicateCase>& info) { return info.param.name; });

TEST(MessageDuplicates, GoneOperatorEqualsNoOperator) {
    MessageManager manager;
    auto op = std::make_shared<Operator>(L"TAMARIN", L"Gone");
    auto survivor = std::make_shared<Operator>(L"TAMARIN", L"Alive");
    manager.AddMessage(op, nullptr, L"lost", L"", E);
    manager.AddMessage(survivor, nullptr, L"lost", L"", E);
    manager.AddMessage(nullptr, nullptr, L"other", L"", E);
    op.reset();

    // A report without operator now repeats the message whose operator is gone, not the one whose
    // operator lives.
    manager.AddMessage(nullptr, nullptr, L"lost", L"", E);
    const auto messages = manager.GetMessages();
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(messages[0]->GetOperator(), survivor);
    EXPECT_EQ(messages[1]->GetText(), L"other");
    EXPECT_EQ(messages[2]->GetOperator(), nullptr);
    EXPECT_EQ(messages[2]->GetText(), L"lost");
}

TEST(MessageDuplicates, GonePortEqualsNoPort) {
    MessageManager manager;
    auto op = std::make_shared<Operator>(L"TAMARIN", L"Op");
    auto port = Port::Create(L"Loose", PortDirection::Input);
    manager.AddMessage(op, port, L"p", L"", W);
    manager.AddMessage(op, nullptr, L"q", L"", W);
    port.reset();
    manager.AddMessage(op, nullptr, L"p", L"", W);
    EXPECT_EQ(Texts(manager), (std::vector<std::wstring>{L"q", L"p"}));
}

TEST(MessageDuplicates, ManyOperatorsWithOneText) {
    // Lots of operators report the same text: each repeat replaces only its own message.
    MessageManager manager;
    std::vector<std::shared_ptr<Operator>> ops;
    for (int i = 0; i < 50; ++i) {
        ops.push_back(std::make_shared<Operator>(L"TAMARIN", L"Op"));
        manager.AddMessage(ops.back(), nullptr, L"File not found", L"", E);
    }
    manager.AddMessage(ops[10], nullptr, L"File not found", L"", E);
    const auto messages = manager.GetMessages();
    ASSERT_EQ(messages.size(), 50U);
    EXPECT_EQ(messages.back()->GetOperator(), ops[10]);
    EXPECT_EQ(messages[10]->GetOperator(), ops[11]);
}

TEST(MessageList, ClearEmptiesAndForgetsRepeats) {
    MessageManager manager;
    auto op = std::make_shared<Operator>(L"TAMARIN", L"Op");
    manager.AddMessage(op, nullptr, L"a", L"", E);
    manager.ClearMessages();
    EXPECT_TRUE(manager.GetMessages().empty());
    manager.AddMessage(op, nullptr, L"a", L"", E);
    manager.AddMessage(op, nullptr, L"a", L"", E);
    EXPECT_EQ(manager.GetMessages().size(), 1U);
}

// ---- listeners and tokens

TEST(MessageListeners, FireOnEveryChangeUntilTheTokenGoes) {
    MessageManager manager;
    int first = 0;
    int second = 0;
    auto token1 = manager.AddMessagesChangedCB([&first] { ++first; });
    auto token2 = manager.AddMessagesChangedCB([&second] { ++second; });
    manager.AddMessage(nullptr, nullptr, L"a", L"", E);
    manager.AddMessage(nullptr, nullptr, L"a", L"", E);  // a repeat is a change too
    manager.ClearMessages();
    EXPECT_EQ(first, 3);
    EXPECT_EQ(second, 3);

    // A copy of the token keeps the subscription; dropping the last one ends it.
    auto copy = token1;
    token1.reset();
    manager.AddMessage(nullptr, nullptr, L"b", L"", E);
    EXPECT_EQ(first, 4);
    copy.reset();
    manager.AddMessage(nullptr, nullptr, L"c", L"", E);
    EXPECT_EQ(first, 4);
    EXPECT_EQ(second, 5);
}

TEST(MessageListeners, TokenMayOutliveTheManager) {
    std::shared_ptr<void> token;
    {
        MessageManager manager;
        token = manager.AddMessagesChangedCB([] {});
    }
    token.reset();
    SUCCEED();
}

TEST(MessageListeners, ReadTheChangedListWithoutWaiting) {
    MessageManager manager;
    std::vector<std::wstring> seen;
    auto token = manager.AddMessagesChangedCB([&] {
        const auto messages = manager.GetMessages();
        seen.push_back(messages.empty() ? L"<empty>" : messages.back()->GetText());
    });
    manager.AddMessage(nullptr, nullptr, L"a", L"", E);
    manager.AddMessage(nullptr, nullptr, L"b", L"", E);
    manager.ClearMessages();
    EXPECT_EQ(seen, (std::vector<std::wstring>{L"a", L"b", L"<empty>"}));
}

TEST(MessageListeners, ExceptionReachesTheCallerAfterTheChange) {
    MessageManager manager;
    bool fail = true;
    auto token = manager.AddMessagesChangedCB([&fail] {
        if (fail) throw std::runtime_error("listener failed");
    });
    EXPECT_THROW(manager.AddMessage(nullptr, nullptr, L"a", L"", E), std::runtime_error);
    EXPECT_EQ(Texts(manager), std::vector<std::wstring>{L"a"});
    EXPECT_THROW(manager.ClearMessages(), std::runtime_error);
    EXPECT_TRUE(manager.GetMessages().empty());

    // The lock was released on the way out.
    fail = false;
    manager.AddMessage(nullptr, nullptr, L"b", L"", E);
    EXPECT_EQ(Texts(manager), std::vector<std::wstring>{L"b"});
}

TEST(MessageListeners, ChangingTheListFromAListenerIsRefused) {
    MessageManager manager;
    std::string error;
    auto token = manager.AddMessagesChangedCB([&] {
        try {
            manager.AddMessage(nullptr, nullptr, L"nested", L"", E);
        } catch (const QuarnLog::Exception& e) {
            error = e.what();
        }
    });
    manager.AddMessage(nullptr, nullptr, L"a", L"", E);
    EXPECT_NE(error.find("listeners"), std::string::npos) << error;
    EXPECT_EQ(Texts(manager), std::vector<std::wstring>{L"a"});
}

TEST(MessageListeners, EmptyCallbackIsRefused) {
    MessageManager manager;
    EXPECT_THROW(manager.AddMessagesChangedCB({}), QuarnLog::Exception);
}

// ---- threads

TEST(MessageThreads, ReportsFromAnotherThreadWhileTheDisplayReads) {
    auto model = std::make_shared<Model>();
    auto op = std::make_shared<Operator>(L"TAMARIN", L"Worker");
    model->AddOperator(op);
    auto port = op->AddPort(L"In", PortDirection::Input);

    MessageManager manager;
    manager.UpdateProcess(model);
    const auto uiThread = std::this_thread::get_id();
    std::atomic<int> calls = 0;
    std::atomic<bool> onUiThread = false;
    auto token = manager.AddMessagesChangedCB([&] {
        ++calls;
        if (std::this_thread::get_id() == uiThread) onUiThread = true;
    });

    constexpr int reports = 2000;
    std::atomic<bool> done = false;
    std::thread reporter([&] {
        for (int i = 0; i < reports; ++i) {
            // Every tenth report repeats the previous one.
            const int n = i % 10 == 9 ? i - 1 : i;
            op->SetWarningMessage(L"warning " + std::to_wstring(n), port);
        }
        done = true;
    });
    std::size_t reads = 0;
    std::size_t last = 0;
    bool consistent = true;
    while (!done) {
        const auto messages = manager.GetMessages();
        for (const auto& message : messages)
            consistent = consistent && message && message->GetOperator() == op;
        // Repeats replace, so the list never shrinks.
        consistent = consistent && messages.size() >= last;
        last = messages.size();
        ++reads;
    }
    reporter.join();
    EXPECT_TRUE(consistent);
    EXPECT_GT(reads, 0U);
    EXPECT_EQ(calls.load(), reports);
    EXPECT_FALSE(onUiThread.load());
    EXPECT_EQ(manager.GetMessages().size(), static_cast<std::size_t>(reports - reports / 10));
}

TEST(MessageThreads, SeveralReportersKeepEveryDistinctReport) {
    MessageManager manager;
    std::vector<std::shared_ptr<Operator>> ops;
    for (int t = 0; t < 4; ++t) ops.push_back(std::make_shared<Operator>(L"TAMARIN", L"Op"));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&manager, op = ops[t]] {
            for (int i = 0; i < 300; ++i)
                manager.AddMessage(op, nullptr, L"m" + std::to_wstring(i % 100), L"", E);
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(manager.GetMessages().size(), 400U);
}

// ---- the hook on the current model

TEST(MessageHook, FollowsTheCurrentModel) {
    auto first = std::make_shared<Model>();
    auto second = std::make_shared<Model>();
    auto op1 = std::make_shared<Operator>(L"TAMARIN", L"One");
    auto op2 = std::make_shared<Operator>(L"TAMARIN", L"Two");
    first->AddOperator(op1);
    second->AddOperator(op2);
    auto port = op1->AddPort(L"In", PortDirection::Input);

    MessageManager manager;
    int changes = 0;
    auto token = manager.AddMessagesChangedCB([&changes] { ++changes; });
    op1->SetErrorMessage(L"before any hook");
    EXPECT_TRUE(manager.GetMessages().empty());

    manager.UpdateProcess(first);
    op1->AddMessage(port, L"Input1\nargs\nFile not found", L"help.file", Severity::Error);
    auto messages = manager.GetMessages();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0]->GetOperator(), op1);
    EXPECT_EQ(messages[0]->GetPort(), port);
    EXPECT_EQ(messages[0]->GetText(), L"File not found (Input1)");
    EXPECT_EQ(messages[0]->GetHelpKey(), L"help.file");

    // Moving the hook neither clears nor fires.
    manager.UpdateProcess(second);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(manager.GetMessages().size(), 1U);
    op1->SetErrorMessage(L"from the old model");
    op2->SetWarningMessage(L"from the new model");
    EXPECT_EQ(Texts(manager),
              (std::vector<std::wstring>{L"File not found (Input1)", L"from the new model"}));

    // A null model only releases the hook.
    manager.UpdateProcess(nullptr);
    op2->SetWarningMessage(L"unheard");
    EXPECT_EQ(manager.GetMessages().size(), 2U);
}

TEST(MessageHook, ModelMayOutliveTheManager) {
    auto model = std::make_shared<Model>();
    auto op = std::make_shared<Operator>(L"TAMARIN", L"Op");
    model->AddOperator(op);
    {
        MessageManager manager;
        manager.UpdateProcess(model);
        op->SetInfoMessage(L"heard");
        EXPECT_EQ(manager.GetMessages().size(), 1U);
    }
    op->SetInfoMessage(L"nobody listens");
    EXPECT_EQ(op->GetMessages().size(), 2U);
}

}  // namespace
