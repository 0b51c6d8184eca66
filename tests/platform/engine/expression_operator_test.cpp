#include <gtest/gtest.h>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/ExpressionOperator.h"
#include "Velmar/Lattix/Lxl/SyntaxError.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "Velmar/Lattix/StringData.h"
#include "engine_test_support.h"

using namespace Velmar::Lattix;

namespace {

std::vector<std::wstring> InputNames(const Operator& op) {
    std::vector<std::wstring> names;
    for (const auto& port : op.GetPorts())
        if (port->IsInput()) names.push_back(port->GetName());
    return names;
}

TEST(ExpressionOperatorTest, PortsFollowTheDollarNames) {
    auto op = OperatorFactory::Create(L"TAMARIN", L"Expression");
    ASSERT_TRUE(std::dynamic_pointer_cast<ExpressionOperator>(op));
    auto expression = op->GetPort(L"Expression");
    ASSERT_TRUE(expression);
    EXPECT_EQ(InputNames(*op), std::vector<std::wstring>{L"Expression"});

    auto text = std::make_shared<StringData>();
    text->Initialize(L"$dem * 2 + FocalMean($slope, 3) - $dem");
    expression->SetData(text);
    EXPECT_EQ(InputNames(*op), (std::vector<std::wstring>{L"Expression", L"dem", L"slope"}));
    EXPECT_TRUE(op->GetPort(L"dem")->SupportsType(ObjectName(L"TAMARIN", L"Raster")));

    // A connected port stays when the text no longer refers to it; an unconnected one goes.
    auto model = std::make_shared<Model>();
    model->AddOperator(op);
    auto source = enginetest::AddOperator(model, L"Source", {}, {});
    Operator::ConnectParent(op, source, source->GetPort(L"Out"), op->GetPort(L"slope"));
    expression->SetData(std::make_shared<StringData>(L"$rain + 1"));
    EXPECT_EQ(InputNames(*op), (std::vector<std::wstring>{L"Expression", L"slope", L"rain"}));
    EXPECT_EQ(std::dynamic_pointer_cast<ExpressionOperator>(op)->GetReferencedPortNames(),
              std::vector<std::wstring>{L"rain"});
}

TEST(ExpressionOperatorTest, InvalidTextRaisesTheParserMessageAndKeepsTheOldOne) {
    auto op = OperatorFactory::Create(L"TAMARIN", L"Expression");
    auto expression = op->GetPort(L"Expression");
    expression->SetData(std::make_shared<StringData>(L"$a + 1"));
    struct Case {
        const wchar_t* text;
        const char* message;
    };
    const Case cases[] = {
        {L"$a +", "column"},
        {L"NoSuchFunction($a)", "Unknown function"},
        {L"RasterInput($a)", "Unknown function"},
        {L"$Output + 1", "cannot refer to $Output"},
    };
    for (const auto& c : cases) {
        try {
            expression->SetData(std::make_shared<StringData>(c.text));
            ADD_FAILURE() << "accepted an invalid expression";
        } catch (const QuarnLog::Exception& error) {
            EXPECT_NE(std::string(error.what()).find(c.message), std::string::npos) << error.what();
        }
        EXPECT_EQ(expression->GetData()->ToString(), L"$a + 1");
        EXPECT_TRUE(op->GetPort(L"a"));
    }
    EXPECT_THROW(expression->SetData(std::make_shared<StringData>(L"1 +")), Lxl::SyntaxError);
    expression->SetData(std::make_shared<StringData>(L"Sin($x) > 0 and TAMARIN.Max($x, $y) < 3"));
    EXPECT_TRUE(op->GetPort(L"y"));
    EXPECT_FALSE(op->GetPort(L"a"));
    EXPECT_TRUE(expression->SetDataFromString(L""));
    EXPECT_FALSE(op->GetPort(L"x")) << "an empty expression refers to nothing";
}

}  // namespace
