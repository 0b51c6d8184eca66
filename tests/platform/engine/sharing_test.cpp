// Operators of one type share their definition's texts and port definitions, and type names share
// their text between copies: editing one operator or one name must never show through another.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <tuple>

#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/OperatorDefinition.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/StringListData.h"
#include "qtxt/Text.h"

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

TEST(SharedDefinition, EachPortEditStaysOnItsOwnPort) {
    const ObjectName text = ObjectName::Parse(L"TAMARIN.String");
    struct Edit {
        const char* what;
        std::function<void(Port&)> apply;
    };
    const std::vector<Edit> edits = {
        {"display name", [](Port& p) { p.SetDisplayName(L"Left"); }},
        {"description", [](Port& p) { p.SetDescription(L"The left operand."); }},
        {"keywords", [](Port& p) { p.SetKeywords({L"first"}); }},
        {"keywords as attribute",
         [](Port& p) {
             p.SetAttribute(L"Keywords",
                            std::make_shared<StringListData>(std::vector<std::wstring>{L"lhs"}));
         }},
        {"supported types", [&](Port& p) { p.SetSupportedTypes({text}); }},
        {"added type", [&](Port& p) { p.AddSupportedType(text); }},
        {"cleared types", [](Port& p) { p.ClearSupportedTypes(); }},
        {"extra type", [&](Port& p) { p.AddExtraSupportedType(text); }},
        {"excluded type", [](Port& p) { p.AddExcludedType(DoubleData::DefaultTypeName()); }},
        {"copied contents",
         [](Port& p) {
             auto other = Port::Create(L"Other", PortDirection::Input);
             other->SetDescription(L"copied");
             p.CopyContentsFrom(*other);
         }},
    };
    for (const auto& edit : edits) {
        SCOPED_TRACE(edit.what);
        auto edited = OperatorFactory::Create(L"TAMARIN", L"Add");
        auto twin = OperatorFactory::Create(L"TAMARIN", L"Add");
        auto port = edited->GetPort(L"Input1");
        auto pristine = twin->GetPort(L"Input1");
        auto before = std::make_tuple(pristine->GetDisplayName(), pristine->GetDescription(),
                                      pristine->GetKeywords(), pristine->GetSupportedDataTypes());
        edit.apply(*port);
        auto after = std::make_tuple(port->GetDisplayName(), port->GetDescription(),
                                     port->GetKeywords(), port->GetSupportedDataTypes());
        EXPECT_NE(after, before);
        EXPECT_EQ(port->GetName(), L"Input1");
        for (const auto& other : {twin, OperatorFactory::Create(L"TAMARIN", L"Add")}) {
            auto same = other->GetPort(L"Input1");
            EXPECT_EQ(std::make_tuple(same->GetDisplayName(), same->GetDescription(),
                                      same->GetKeywords(), same->GetSupportedDataTypes()),
                      before);
        }
    }
    auto renamed = OperatorFactory::Create(L"TAMARIN", L"Add");
    ASSERT_TRUE(renamed->RenamePort(L"Input1", L"Left"));
    EXPECT_TRUE(renamed->GetPort(L"Left"));
    EXPECT_TRUE(OperatorFactory::Create(L"TAMARIN", L"Add")->GetPort(L"Input1"));
}

TEST(SharedDefinition, DefaultsAreReadOnceAndCopiedToEachPort) {
    OperatorDefinition definition;
    definition.name = ObjectName(L"Sharing", L"Defaulted");
    auto port = DoublePort(L"Scale", PortDirection::Input);
    port.defaultValue = L"2.5";
    definition.ports.push_back(port);
    OperatorFactory::Register(definition);
    auto first = OperatorFactory::Create(definition.name);
    auto second = OperatorFactory::Create(definition.name);
    auto value = std::dynamic_pointer_cast<DoubleData>(first->GetPort(L"Scale")->GetDefaultData());
    ASSERT_TRUE(value);
    EXPECT_EQ(value->GetValue(), 2.5);
    value->SetValue(-1);
    auto other = std::dynamic_pointer_cast<DoubleData>(second->GetPort(L"Scale")->GetDefaultData());
    ASSERT_TRUE(other);
    EXPECT_EQ(other->GetValue(), 2.5);

    // A default its type cannot read is refused when the type is registered, by name.
    definition.name = ObjectName(L"Sharing", L"BadDefault");
    definition.ports.front().defaultValue = L"two and a half";
    try {
        OperatorFactory::Register(definition);
        ADD_FAILURE() << "a bad default was registered";
    } catch (const std::exception& error) {
        std::string message = error.what();
        EXPECT_NE(message.find("Sharing.BadDefault"), std::string::npos) << message;
        EXPECT_NE(message.find("Scale"), std::string::npos) << message;
        EXPECT_NE(message.find("two and a half"), std::string::npos) << message;
    }
    EXPECT_FALSE(OperatorFactory::IsKnown(definition.name));
    OperatorFactory::Unregister(ObjectName(L"Sharing", L"Defaulted"));
}

TEST(OperatorAttributes, AnyNameIsKeptExactlyAndInOrder) {
    const std::vector<std::wstring> names = {
        L"PositionX",
        L"PositionY",
        L"A",
        L"a",
        L"Z9",
        L"Höhe",
        L"名前",
        L"\U0001F600",
        L"x\u0080",
        L"\u07FF\u0800\uFFFF",
        L"tab\there",
        std::wstring(L"nul\0in", 6),
        std::wstring(300, L'w'),
        std::wstring(1, static_cast<wchar_t>(0xD800)),
        std::wstring(1, static_cast<wchar_t>(0x7FFFFFFF)),
        std::wstring(1, static_cast<wchar_t>(-5)),
        std::wstring(L"a") + static_cast<wchar_t>(-2147483647 - 1)};
    auto op = OperatorFactory::Create(L"TAMARIN", L"Add");
    std::map<std::wstring, double> expected;
    for (std::size_t i = 0; i < names.size(); ++i) {
        op->SetAttribute(names[i], std::make_shared<DoubleData>(static_cast<double>(i)));
        expected[names[i]] = static_cast<double>(i);
    }
    op->SetAttribute(L"A", std::make_shared<DoubleData>(99.0));  // replaces
    expected[L"A"] = 99.0;
    auto map = op->GetAttributeMap();
    ASSERT_EQ(map.size(), expected.size());
    auto want = expected.begin();
    for (const auto& [name, value] : map) {
        EXPECT_EQ(name, want->first);
        auto number = std::dynamic_pointer_cast<DoubleData>(value);
        ASSERT_TRUE(number);
        EXPECT_EQ(number->GetValue(), want->second);
        auto direct = std::dynamic_pointer_cast<DoubleData>(op->GetAttribute(name));
        ASSERT_TRUE(direct);
        EXPECT_EQ(direct->GetValue(), want->second);
        ++want;
    }
    // Saved and read back: every name that is valid Unicode comes back as it was.
    auto model = std::make_shared<Model>();
    model->AddOperator(op);
    auto reopened = ModelFormatFactory::OpenFromBuffer(
        ModelFormatFactory::SaveToBuffer(model, ModelFormatFactory::PlainFormatName), L"");
    ASSERT_EQ(reopened->GetOperators().size(), 1u);
    auto back = reopened->GetOperators().front()->GetAttributeMap();
    for (const auto& name : names) {
        bool valid = std::all_of(name.begin(), name.end(), [](wchar_t c) {
            auto code = static_cast<std::uint32_t>(c);
            return code != 0 && (code < 0xD800 || (code > 0xDFFF && code <= 0x10FFFF));
        });
        if (!valid) continue;
        EXPECT_TRUE(back.count(name)) << qtxt::narrow(name);
    }

    EXPECT_FALSE(op->GetAttribute(L"Höh"));
    EXPECT_TRUE(op->RemoveAttribute(L"名前"));
    EXPECT_FALSE(op->RemoveAttribute(L"名前"));
    EXPECT_FALSE(op->HasAttribute(L"名前"));
    op->SetAttribute(L"PositionX", nullptr);
    EXPECT_FALSE(op->HasAttribute(L"PositionX"));
    EXPECT_EQ(op->GetAttributeMap().size(), expected.size() - 2);
}

}  // namespace
