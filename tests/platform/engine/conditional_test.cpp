#include <gtest/gtest.h>

#include "LattixBasic/ConditionalProcess.h"
#include "LattixBasic/IfProcess.h"
#include "LattixBasic/LoopProcess.h"
#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "engine_test_support.h"

using namespace Velmar::Lattix;
using enginetest::AddOperator;
using LattixBasic::ConditionalProcess;
using LattixBasic::IfProcess;
using LattixBasic::LoopProcess;

namespace {

using Ops = std::vector<std::shared_ptr<Operator>>;

TEST(IfProcessTest, TailsPerBranch) {
    auto model = std::make_shared<Model>();
    auto branch = std::dynamic_pointer_cast<IfProcess>(OperatorFactory::Create(L"TAMARIN", L"If"));
    ASSERT_TRUE(branch);
    model->AddOperator(branch);
    ASSERT_TRUE(branch->GetPort(L"Condition"));
    auto yes = AddOperator(model, L"Yes", {}, {});
    auto no = AddOperator(model, L"No", {}, {});

    model->NotifyOperatorAttached(branch, yes, nullptr);
    EXPECT_TRUE(branch->AddIfTail(yes));
    EXPECT_FALSE(branch->AddIfTail(yes));
    EXPECT_TRUE(branch->AddElseTail(no));
    EXPECT_EQ(branch->GetIfTails(true), Ops{yes});
    EXPECT_EQ(branch->GetIfTails(false), Ops{no});
    EXPECT_TRUE(model->IsOperatorConnected(yes));
    EXPECT_TRUE(model->IsOperatorConnected(branch));

    EXPECT_TRUE(branch->AddElseTail(yes)) << "moves to the other branch";
    Ops trueTails, falseTails;
    branch->GetIfTails(trueTails, falseTails);
    EXPECT_TRUE(trueTails.empty());
    EXPECT_EQ(falseTails, (Ops{no, yes}));
    EXPECT_TRUE(branch->RemoveTail(yes));
    EXPECT_FALSE(branch->RemoveTail(yes));

    model->RemoveOperator(no);
    EXPECT_TRUE(branch->GetIfTails(false).empty())
        << "removing an operator takes it off the branches";
    EXPECT_THROW(branch->AddIfTail(branch), QuarnLog::Exception);
}

TEST(ConditionalProcessTest, BodyAndTest) {
    auto model = std::make_shared<Model>();
    auto conditional = std::dynamic_pointer_cast<ConditionalProcess>(
        OperatorFactory::Create(L"TAMARIN", L"Conditional"));
    ASSERT_TRUE(conditional);
    EXPECT_FALSE(std::dynamic_pointer_cast<IfProcess>(conditional));
    model->AddOperator(conditional);
    auto body = AddOperator(model, L"Body", {}, {});
    auto test = AddOperator(model, L"Test", {}, {});
    auto stranger = AddOperator(nullptr, L"Stranger", {}, {});

    model->NotifyOperatorAttached(conditional, test, test->GetPort(L"Out"));
    conditional->SetTest(test, test->GetPort(L"Out"));
    EXPECT_EQ(conditional->GetTestOperator(), test);
    EXPECT_EQ(conditional->GetTestPort(), test->GetPort(L"Out"));
    EXPECT_THROW(conditional->SetTest(test, body->GetPort(L"Out")), QuarnLog::Exception);
    EXPECT_THROW(model->NotifyOperatorAttached(conditional, stranger, nullptr),
                 QuarnLog::Exception);
    EXPECT_THROW(model->NotifyOperatorAttached(body, test, nullptr), QuarnLog::Exception)
        << "not conditional";

    EXPECT_TRUE(conditional->AddBodyOperator(body));
    EXPECT_FALSE(conditional->AddBodyOperator(body));
    EXPECT_EQ(conditional->GetBody(), Ops{body});
    EXPECT_TRUE(model->IsOperatorConnected(body));
    EXPECT_TRUE(conditional->ForgetOperator(body));
    EXPECT_FALSE(conditional->RemoveBodyOperator(body));
    EXPECT_TRUE(conditional->ClearTest());
    EXPECT_FALSE(conditional->ClearTest());
    EXPECT_FALSE(model->IsOperatorConnected(conditional));

    // Operators inside a conditional have it as their process.
    auto inner = AddOperator(nullptr, L"Inner", {}, {});
    conditional->AddOperator(inner);
    EXPECT_TRUE(std::dynamic_pointer_cast<ConditionalProcess>(inner->GetProcess()));
    EXPECT_EQ(inner->GetMainProcess(), model);
}

TEST(LoopProcessTest, IsAConditionalWithItsOwnPorts) {
    auto loop =
        std::dynamic_pointer_cast<LoopProcess>(OperatorFactory::Create(L"TAMARIN", L"Loop"));
    ASSERT_TRUE(loop);
    EXPECT_EQ(loop->GetDisplayCategory(), L"FlowControl");
    ASSERT_TRUE(loop->GetPort(L"MaxIterations"));
    EXPECT_EQ(loop->GetPort(L"MaxIterations")->GetExistingData()->ToString(), L"0");
    ASSERT_TRUE(loop->GetPort(L"Iteration"));
    EXPECT_TRUE(loop->GetPort(L"Iteration")->IsOutput());
    auto model = std::make_shared<Model>();
    model->AddOperator(loop);
    auto body = AddOperator(model, L"Body", {}, {});
    auto test = AddOperator(model, L"Test", {}, {});
    loop->AddBodyOperator(body);
    loop->SetTest(test, nullptr);
    EXPECT_EQ(loop->GetTestPort(), test->GetPort(L"Out")) << "the first output by default";
    model->RemoveOperator(test);
    EXPECT_EQ(loop->GetTestOperator(), nullptr);
}

}  // namespace
