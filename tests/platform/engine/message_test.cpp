#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "QuarnLog/Exception.h"
#include "engine_test_support.h"

using namespace Velmar::Lattix;
using enginetest::AddOperator;

namespace {

struct Received {
    std::shared_ptr<Operator> op;
    std::shared_ptr<Port> port;
    std::wstring text;
    std::wstring helpKey;
    Issue::Severity severity;
};

TEST(MessageTest, ReportsReachTheOperatorAndEveryModelAbove) {
    auto model = std::make_shared<Model>();
    auto sub = std::make_shared<Model>();
    model->AddSubModel(sub);
    auto op = AddOperator(sub, L"A", {}, {});
    std::vector<Received> atModel, atOperator;
    auto modelToken = model->AddOnMessageCallback(
        [&atModel](const auto& o, const auto& p, const auto& t, const auto& h, Issue::Severity s) {
            atModel.push_back({o, p, t, h, s});
        });
    auto opToken =
        op->AddOnMessageCallback([&atOperator](const auto& o, const auto& p, const auto& t,
                                               const auto& h, Issue::Severity s) {
            atOperator.push_back({o, p, t, h, s});
        });
    op->SetErrorMessage(L"File not found", op->GetPort(L"In"), L"help_key");
    op->SetWarningMessage(L"careful");
    ASSERT_EQ(atModel.size(), 2u);
    EXPECT_EQ(atModel[0].op, op);
    EXPECT_EQ(atModel[0].port, op->GetPort(L"In"));
    EXPECT_EQ(atModel[0].text, L"File not found");
    EXPECT_EQ(atModel[0].helpKey, L"help_key");
    EXPECT_EQ(atModel[0].severity, Issue::Severity::Error);
    EXPECT_EQ(atOperator.size(), 2u);
    EXPECT_TRUE(op->HasError());
    EXPECT_TRUE(op->HasWarning());
    EXPECT_FALSE(op->HasInfo());
    op->SetErrorMessage(L"File not found", op->GetPort(L"In"), L"help_key");
    EXPECT_EQ(op->GetMessages().size(), 2u) << "a repeated message is kept once";
    op->ClearMessages();
    EXPECT_FALSE(op->HasError());

    model->RemoveOperator(sub);
    op->SetInfoMessage(L"after removal");
    EXPECT_EQ(atModel.size(), 3u) << "no longer below the model";
    EXPECT_EQ(atOperator.size(), 4u);
}

TEST(MessageTest, CallbacksRunFromOtherThreadsOnlyWhileTheTokenLives) {
    auto model = std::make_shared<Model>();
    auto op = AddOperator(model, L"Worker", {}, {});
    std::atomic<int> calls{0};
    std::atomic<bool> released{false};
    std::atomic<int> afterRelease{0};
    auto token = model->AddOnMessageCallback(
        [&](const auto&, const auto&, const auto&, const auto&, Issue::Severity) {
            if (released.load()) ++afterRelease;
            ++calls;
        });

    std::atomic<bool> stop{false};
    std::vector<std::thread> workers;
    for (int t = 0; t < 3; ++t)
        workers.emplace_back([&op, &stop, t] {
            for (int i = 0; !stop.load(); ++i) {
                op->SetInfoMessage(L"progress " + std::to_wstring(t) + L"/" +
                                   std::to_wstring(i % 5));
                op->SetProgress(i);
            }
        });
    while (calls.load() < 300) std::this_thread::yield();
    token.reset();  // waits for a call in progress; none starts afterwards
    released.store(true);
    int atRelease = calls.load();
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    stop.store(true);
    for (auto& worker : workers) worker.join();
    EXPECT_EQ(afterRelease.load(), 0);
    EXPECT_EQ(calls.load(), atRelease);
}

TEST(MessageTest, ATokenMayBeReleasedInsideItsOwnCallback) {
    auto op = AddOperator(nullptr, L"A", {}, {});
    int calls = 0;
    std::shared_ptr<void> token;
    token = op->AddOnMessageCallback(
        [&](const auto&, const auto&, const auto&, const auto&, Issue::Severity) {
            ++calls;
            token.reset();
        });
    op->SetInfoMessage(L"one");
    op->SetInfoMessage(L"two");
    EXPECT_EQ(calls, 1);
    EXPECT_THROW(op->AddOnMessageCallback(nullptr), QuarnLog::Exception);
}

TEST(MessageTest, ATokenOutlivingItsOperatorIsHarmless) {
    std::shared_ptr<void> token;
    {
        auto op = AddOperator(nullptr, L"A", {}, {});
        token = op->AddOnMessageCallback(
            [](const auto&, const auto&, const auto&, const auto&, Issue::Severity) {});
    }
    token.reset();
    SUCCEED();
}

}  // namespace
