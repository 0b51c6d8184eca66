// Operators of one type share their definition's texts and port definitions, and type names share
// their text between copies: editing one operator or one name must never show through another.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/OperatorDefinition.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "Velmar/Lattix/Port.h"

using namespace Velmar::Lattix;

namespace {

PortDefinition DoublePort(const std::wstring& name, PortDirection direction) {
    PortDefinition port;
    port.name = name;
    port.direction = direction;
    port.types = {DoubleData::DefaultTypeName()};
    return port;
}

TEST(SharedDefinition, EditingOneOperatorLeavesItsTwinAndTheFactoryAlone) {
    auto first = OperatorFactory::Create(L"TAMARIN", L"Add");
    auto second = OperatorFactory::Create(L"TAMARIN", L"Add");
    auto description = second->GetDescription();
    auto keywords = second->GetKeywords();
    auto forms = second->GetSyntaxForms();
    auto icon = second->GetIcon();
    auto colour = second->GetColorCategory();
    auto category = second->GetDisplayCategory();

    first->SetDisplayName(L"Sum");
    first->SetDescription(L"Adds two rasters.");
    first->SetKeywords({L"plus"});
    first->SetSyntaxForms({L"Sum(<A>, <B>)"});
    first->SetIcon(L"sum.svg");
    first->SetColorCategory(L"Deprecated");
    first->SetDisplayCategory(L"Mine");
    first->GetPort(L"Input1")->SetDescription(L"Left");

    EXPECT_EQ(first->GetDisplayName(), L"Sum");
    EXPECT_EQ(first->GetDescription(), L"Adds two rasters.");
    EXPECT_EQ(first->GetKeywords(), std::vector<std::wstring>{L"plus"});
    EXPECT_EQ(first->GetColorCategory(), L"Deprecated");
    for (const auto& other : {second, OperatorFactory::Create(L"TAMARIN", L"Add")}) {
        EXPECT_EQ(other->GetDisplayName(), L"Add");
        EXPECT_EQ(other->GetDescription(), description);
        EXPECT_EQ(other->GetKeywords(), keywords);
        EXPECT_EQ(other->GetSyntaxForms(), forms);
        EXPECT_EQ(other->GetIcon(), icon);
        EXPECT_EQ(other->GetColorCategory(), colour);
        EXPECT_EQ(other->GetDisplayCategory(), category);
        EXPECT_NE(other->GetPort(L"Input1")->GetDescription(), L"Left");
    }
}

TEST(SharedDefinition, ReRegisteringATypeChangesOnlyOperatorsMadeAfterwards) {
    OperatorDefinition definition;
    definition.name = ObjectName(L"Sharing", L"Probe");
    definition.description = L"first";
    definition.ports.push_back(DoublePort(L"In", PortDirection::Input));
    OperatorFactory::Register(definition);
    auto before = OperatorFactory::Create(definition.name);

    definition.description = L"second";
    definition.ports.front().name = L"Renamed";
    OperatorFactory::Register(definition);
    auto after = OperatorFactory::Create(definition.name);
    OperatorFactory::Unregister(definition.name);

    EXPECT_EQ(before->GetDescription(), L"first");
    ASSERT_EQ(before->GetDeclaredPorts().size(), 1u);
    EXPECT_EQ(before->GetDeclaredPorts().front().name, L"In");
    EXPECT_EQ(after->GetDescription(), L"second");
    EXPECT_EQ(after->GetDeclaredPorts().front().name, L"Renamed");
    EXPECT_TRUE(after->GetPort(L"Renamed"));
    EXPECT_FALSE(after->GetPort(L"In"));
}

TEST(SharedDefinition, ApplyingADefinitionCopiesIt) {
    OperatorDefinition definition;
    definition.name = ObjectName(L"Sharing", L"Applied");
    definition.description = L"kept";
    definition.ports.push_back(DoublePort(L"Out", PortDirection::Output));
    auto op = std::make_shared<Operator>();
    op->ApplyDefinition(definition);
    definition.description = L"changed";
    definition.ports.clear();
    EXPECT_EQ(op->GetDescription(), L"kept");
    EXPECT_EQ(op->GetDeclaredPorts().size(), 1u);
    EXPECT_TRUE(op->GetPort(L"Out"));
}

TEST(ObjectNameSharing, CopiesCompareAndOrderLikeTheirTexts) {
    struct Case {
        ObjectName a;
        ObjectName b;
        int order;  // sign of a <=> b
    };
    ObjectName shared(L"TAMARIN", L"Int");
    const Case cases[] = {
        {shared, shared, 0},
        {shared, ObjectName(L"TAMARIN", L"Int"), 0},
        {ObjectName(L"TAMARIN", L"Double"), shared, -1},
        {ObjectName(L"User", L"A"), ObjectName(L"TAMARIN", L"Z"), 1},
        {ObjectName(), ObjectName(L"", L""), 0},
        {ObjectName(), shared, -1},
        {ObjectName(L"A", L""), ObjectName(L"", L"A"), 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.a.GetFullName() + L" vs " + c.b.GetFullName());
        auto order = c.a <=> c.b;
        EXPECT_EQ(order < 0, c.order < 0);
        EXPECT_EQ(order > 0, c.order > 0);
        EXPECT_EQ(c.a == c.b, c.order == 0);
        EXPECT_EQ(c.b == c.a, c.order == 0);
    }
    ObjectName copy = shared;
    copy = ObjectName::Parse(L"TAMARIN.Bool");
    EXPECT_EQ(shared.GetFullName(), L"TAMARIN.Int");
    EXPECT_EQ(copy.GetFullName(), L"TAMARIN.Bool");
    EXPECT_TRUE(ObjectName().IsEmpty());
    EXPECT_EQ(ObjectName().GetFullName(), L".");

    std::map<ObjectName, int> byName{{ObjectName(L"B", L"x"), 2}, {ObjectName(L"A", L"y"), 1}};
    EXPECT_EQ(byName.begin()->first.GetNamespace(), L"A");
    EXPECT_EQ(byName.count(ObjectName::Parse(L"B.x")), 1u);
}

TEST(ModelMembership, FollowsAddingRemovingAndMovingOperators) {
    auto first = std::make_shared<Model>();
    auto second = std::make_shared<Model>();
    std::vector<std::shared_ptr<Operator>> ops;
    for (int i = 0; i < 50; ++i) {
        ops.push_back(OperatorFactory::Create(L"TAMARIN", L"Add"));
        first->AddOperator(ops.back());
        first->AddOperator(ops.back());  // twice: still once
    }
    EXPECT_EQ(first->GetOperators().size(), ops.size());
    for (std::size_t i = 0; i < ops.size(); i += 2) EXPECT_TRUE(first->RemoveOperator(ops[i]));
    EXPECT_FALSE(first->RemoveOperator(ops[0]));
    for (std::size_t i = 0; i < ops.size(); ++i) {
        EXPECT_EQ(first->ContainsOperator(ops[i]), i % 2 == 1) << i;
        EXPECT_FALSE(second->ContainsOperator(ops[i]));
    }
    second->AddOperator(ops[0]);
    EXPECT_TRUE(second->ContainsOperator(ops[0]));
    EXPECT_THROW(second->AddOperator(ops[1]), std::exception);
    EXPECT_FALSE(second->ContainsOperator(ops[1]));
    EXPECT_FALSE(first->ContainsOperator(nullptr));
}

}  // namespace
