#include <gtest/gtest.h>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/StringData.h"
#include "Velmar/Lattix/StringListData.h"
#include "engine_test_support.h"

using namespace Velmar::Lattix;
using enginetest::AddOperator;
using enginetest::Type;

namespace {

TEST(PortTest, HidingIsRefusedWhileConnected) {
    auto model = std::make_shared<Model>();
    auto a = AddOperator(model, L"A", {Type(L"TAMARIN.Int")}, {Type(L"TAMARIN.Int")});
    auto b = AddOperator(model, L"B", {Type(L"TAMARIN.Int")}, {Type(L"TAMARIN.Int")});
    auto in = b->GetPort(L"In");
    EXPECT_TRUE(in->SetIsHidden(true));
    EXPECT_TRUE(in->SetIsHidden(false));
    Operator::ConnectParent(b, a, a->GetPort(L"Out"), in);
    EXPECT_FALSE(in->SetIsHidden(true));
    EXPECT_FALSE(in->IsHidden());
    EXPECT_FALSE(a->GetPort(L"Out")->SetIsHidden(true));
    ASSERT_TRUE(b->DisconnectParent(a, a->GetPort(L"Out"), in));
    EXPECT_TRUE(in->SetIsHidden(true));
}

TEST(PortTest, SupportedTypesWithExtraAndExcluded) {
    auto port = Port::Create(L"P", PortDirection::Input);
    EXPECT_TRUE(port->SupportsType(Type(L"TAMARIN.Raster"))) << "no types: accepts all";
    port->SetSupportedTypes({Type(L"TAMARIN.Int"), Type(L"TAMARIN.Double"), Type(L"TAMARIN.Int")});
    port->AddExtraSupportedType(Type(L"TAMARIN.String"));
    port->AddExcludedType(Type(L"TAMARIN.Double"));
    const std::vector<ObjectName> expected = {Type(L"TAMARIN.Int"), Type(L"TAMARIN.String")};
    EXPECT_EQ(port->GetSupportedDataTypes(), expected);
    EXPECT_FALSE(port->SupportsType(Type(L"TAMARIN.Double")));
    EXPECT_FALSE(port->SupportsType(Type(L"TAMARIN.Bool")));
    auto map = port->GetAttributeMap();
    ASSERT_TRUE(map.count(L"AdditionalTypes"));
    EXPECT_EQ(map[L"AdditionalTypes"]->ToString(), L"TAMARIN.String");
    EXPECT_EQ(map[L"ExcludedTypes"]->ToString(), L"TAMARIN.Double");
    port->SetAttribute(L"ExcludedTypes", std::make_shared<StringListData>());
    EXPECT_TRUE(port->SupportsType(Type(L"TAMARIN.Double")));
    EXPECT_THROW(port->SetAttribute(L"AdditionalTypes", std::make_shared<StringData>(L"NoDot")),
                 QuarnLog::Exception);
    port->ClearSupportedTypes();
    port->ClearExtraSupportedTypes();
    EXPECT_TRUE(port->GetSupportedDataTypes().empty());
}

TEST(PortTest, SetDataChecksTheType) {
    auto op = AddOperator(nullptr, L"Scale", {Type(L"TAMARIN.Int")}, {});
    auto in = op->GetPort(L"In");
    try {
        in->SetData(std::make_shared<StringData>(L"x"));
        FAIL();
    } catch (const QuarnLog::Exception& error) {
        EXPECT_NE(std::string(error.what())
                      .find("Port \"In\" of operator \"Scale\" does not accept data of type "
                            "TAMARIN.String (it accepts TAMARIN.Int)"),
                  std::string::npos)
            << error.what();
    }
    EXPECT_FALSE(in->HasData());
    in->SetDefaultData(std::make_shared<IntData>(5));
    EXPECT_EQ(in->GetExistingData(true)->ToString(), L"5");
    EXPECT_EQ(in->GetExistingData(false), nullptr);
    in->SetData(std::make_shared<IntData>(7));
    EXPECT_EQ(in->GetExistingData(false)->ToString(), L"7");
}

struct FromStringCase {
    std::vector<const wchar_t*> types;
    const wchar_t* text;
    bool accepted;
    const wchar_t* resultType;
};

TEST(PortTest, SetDataFromStringTriesTypesInThePortsOrder) {
    const FromStringCase cases[] = {
        {{L"TAMARIN.Int", L"TAMARIN.String"}, L"12", true, L"TAMARIN.Int"},
        {{L"TAMARIN.String", L"TAMARIN.Int"}, L"12", true, L"TAMARIN.String"},
        {{L"TAMARIN.Int", L"TAMARIN.Double"}, L"1.5", true, L"TAMARIN.Double"},
        {{L"TAMARIN.Int", L"TAMARIN.Double"}, L"abc", false, nullptr},
        {{L"TAMARIN.Bool"}, L"yes", true, L"TAMARIN.Bool"},
        {{}, L"3", true, L"TAMARIN.Int"},
        {{}, L"3.25", true, L"TAMARIN.Double"},
        {{}, L"words", true, L"TAMARIN.String"},
        {{L"TAMARIN.Data"}, L"false", true, L"TAMARIN.Bool"},
        {{L"TAMARIN.FocalStatistic"}, L"Sum", true, L"TAMARIN.FocalStatistic"},
    };
    for (const auto& c : cases) {
        auto port = Port::Create(L"P", PortDirection::Input);
        std::vector<ObjectName> types;
        for (auto* t : c.types) types.push_back(Type(t));
        port->SetSupportedTypes(types);
        EXPECT_EQ(port->SetDataFromString(c.text), c.accepted) << c.text;
        if (c.accepted)
            EXPECT_EQ(port->GetData()->GetDataTypeName().GetFullName(), c.resultType) << c.text;
        else
            EXPECT_FALSE(port->HasData());
    }
    auto port = Port::Create(L"P", PortDirection::Input);
    port->SetData(std::make_shared<IntData>(1));
    EXPECT_TRUE(port->SetDataFromString(L""));
    EXPECT_FALSE(port->HasData()) << "an empty text clears the value";
}

TEST(PortTest, DataAttributesOwnAndInheritedThroughAnAlias) {
    auto model = std::make_shared<Model>();
    auto op = AddOperator(model, L"A", {Type(L"TAMARIN.Double")}, {Type(L"TAMARIN.Double")});
    auto inner = op->GetPort(L"In");
    inner->SetDataTypeAttribute(Type(L"TAMARIN.Double"), L"Min", std::make_shared<DoubleData>(0.1));
    inner->SetDataTypeAttribute(Type(L"TAMARIN.Double"), L"Max", std::make_shared<DoubleData>(9));
    auto outer = model->AliasPort(inner, L"Low");
    outer->SetDataTypeAttribute(Type(L"TAMARIN.Double"), L"Max", std::make_shared<DoubleData>(5));

    auto inherited = outer->GetDataTypeAttributeMapMapInherited();
    EXPECT_EQ(inherited[L"TAMARIN.Double"][L"Min"]->ToString(), L"0.1");
    EXPECT_EQ(outer->GetDataTypeAttributeMapMap()[L"TAMARIN.Double"].size(), 1u);
    auto merged = outer->GetDataTypeAttributeMap(Type(L"TAMARIN.Double"));
    EXPECT_EQ(merged[L"Max"]->ToString(), L"5") << "own values win";
    EXPECT_EQ(merged[L"Min"]->ToString(), L"0.1");
    EXPECT_TRUE(outer->RemoveDataTypeAttribute(Type(L"TAMARIN.Double"), L"Max"));
    EXPECT_FALSE(outer->RemoveDataTypeAttribute(Type(L"TAMARIN.Double"), L"Max"));
    EXPECT_TRUE(inner->GetDataTypeAttributeMapMapInherited().empty());
}

TEST(PortTest, CopyContentsFromClonesEverythingButNameAndLinks) {
    auto source = Port::Create(L"Source", PortDirection::Input);
    source->SetDisplayName(L"Shown");
    source->SetOptional(true);
    source->SetSupportedTypes({Type(L"TAMARIN.Int")});
    source->SetData(std::make_shared<IntData>(4));
    source->SetAttribute(L"PositionX", std::make_shared<IntData>(10));
    source->SetKeywords({L"k"});
    auto target = Port::Create(L"Target", PortDirection::Input);
    target->CopyContentsFrom(*source);
    EXPECT_EQ(target->GetName(), L"Target");
    EXPECT_EQ(target->GetDisplayName(), L"Shown");
    EXPECT_TRUE(target->IsOptional());
    EXPECT_EQ(target->GetData()->ToString(), L"4");
    EXPECT_NE(target->GetData(), source->GetData());
    EXPECT_EQ(target->GetAttribute(L"PositionX")->ToString(), L"10");
    EXPECT_EQ(target->GetKeywords(), std::vector<std::wstring>{L"k"});
}

}  // namespace
