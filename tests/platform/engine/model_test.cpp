#include <gtest/gtest.h>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/DictionaryData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/ListData.h"
#include "engine_test_support.h"

using namespace Velmar::Lattix;
using enginetest::AddOperator;
using enginetest::Type;

namespace {

std::shared_ptr<Model> ScaleModel() {
    auto model = std::make_shared<Model>();
    model->SetDisplayName(L"Terrain");
    auto scale = AddOperator(model, L"Scale", {Type(L"TAMARIN.Int"), Type(L"TAMARIN.String")}, {});
    scale->GetPort(L"In")->SetDisplayName(L"Factor");
    auto dotted = AddOperator(model, L"v1.2", {Type(L"TAMARIN.Double")}, {});
    auto twin1 = AddOperator(model, L"Twin", {}, {});
    auto twin2 = AddOperator(model, L"Twin", {}, {});
    auto sub = std::make_shared<Model>();
    sub->SetDisplayName(L"Sub");
    AddOperator(sub, L"Inner", {Type(L"TAMARIN.Bool")}, {});
    model->AddSubModel(sub);
    model->AddNewPort(L"Threshold", PortDirection::Input)
        ->SetSupportedTypes({Type(L"TAMARIN.Double")});
    return model;
}

std::wstring ValueOf(const std::shared_ptr<Model>& model, const wchar_t* op, const wchar_t* port) {
    auto data = model->FindOperators(op).front()->GetPort(port)->GetData();
    return data ? data->ToString() : L"<none>";
}

TEST(SetPortValuesTest, GoodEntries) {
    auto model = ScaleModel();
    model->SetPortValues({L"Scale.In=3", L"Scale.Factor = 4", L"\"v1.2\".In=2.5",
                          L"Sub.Inner.In=yes", L"Terrain.Threshold=0.5"});
    EXPECT_EQ(ValueOf(model, L"Scale", L"In"), L"4");
    EXPECT_EQ(ValueOf(model, L"v1.2", L"In"), L"2.5");
    auto sub = std::dynamic_pointer_cast<Model>(model->FindOperators(L"Sub").front());
    EXPECT_EQ(sub->FindOperators(L"Inner").front()->GetPort(L"In")->GetData()->ToString(), L"true");
    EXPECT_EQ(model->GetPort(L"Threshold")->GetData()->ToString(), L"0.5");

    model->SetPortValues({L"v1.2.In=7"});  // unquoted dots: the joined name still finds it
    EXPECT_EQ(ValueOf(model, L"v1.2", L"In"), L"7");
    model->SetPortValues(
        {L"Scale.In=\"12\""});  // quoted value: literal text, read by the port's types
    EXPECT_EQ(model->FindOperators(L"Scale")
                  .front()
                  ->GetPort(L"In")
                  ->GetData()
                  ->GetDataTypeName()
                  .GetFullName(),
              L"TAMARIN.Int");
    model->SetPortValues({L"Scale.In=a=b"});
    EXPECT_EQ(ValueOf(model, L"Scale", L"In"), L"a=b");
}

TEST(SetPortValuesTest, BadEntriesNameTheEntry) {
    struct Case {
        const wchar_t* entry;
        const char* message;
    };
    const Case cases[] = {
        {L"ScaleIn3", "Invalid port value \"ScaleIn3\": expected Operator.Port=value."},
        {L"Scale=3", "expected Operator.Port=value"},
        {L"Nobody.In=3", "the model has no operator named \"Nobody\""},
        {L"Scale.Missing=3", "operator \"Scale\" has no port named \"Missing\""},
        {L"Twin.In=3", "belongs to 2 operators"},
        {L"\"Scale.In=3", "a quoted name is not closed"},
        {L".In=3", "an operator or port name is empty"},
        {L"v1.2.In=abc", "is not a value of any type port \"In\" accepts (TAMARIN.Double)"},
    };
    for (const auto& c : cases) {
        auto model = ScaleModel();
        try {
            model->SetPortValues({c.entry});
            ADD_FAILURE() << "accepted a bad entry";
        } catch (const QuarnLog::Exception& error) {
            EXPECT_NE(std::string(error.what()).find(c.message), std::string::npos) << error.what();
        }
    }
}

TEST(ModelTest, InputPortsAreTheOpenOnes) {
    auto model = std::make_shared<Model>();
    auto a = AddOperator(model, L"A", {}, {});
    auto b = AddOperator(model, L"B", {}, {});
    auto c = AddOperator(model, L"C", {}, {});
    c->AddPort(L"Secret", PortDirection::Input)->SetPrivate(true);
    Operator::ConnectParent(b, a, a->GetPort(L"Out"), b->GetPort(L"In"));
    auto modelPort = model->AliasPort(c->GetPort(L"In"), L"Given");
    auto inputs = model->GetInputPorts();
    const std::vector<std::shared_ptr<Port>> expected = {modelPort, a->GetPort(L"In")};
    EXPECT_EQ(inputs, expected);
}

TEST(ModelTest, AddAndRemoveOperators) {
    auto model = std::make_shared<Model>();
    auto other = std::make_shared<Model>();
    auto a = AddOperator(model, L"A", {}, {});
    auto b = AddOperator(model, L"B", {}, {});
    EXPECT_EQ(a->GetProcess(), model);
    EXPECT_EQ(a->GetMainProcess(), model);
    EXPECT_THROW(other->AddOperator(a), QuarnLog::Exception);
    EXPECT_THROW(model->AddOperator(model), QuarnLog::Exception);
    auto sub = std::make_shared<Model>();
    model->AddSubModel(sub);
    EXPECT_THROW(sub->AddOperator(model), QuarnLog::Exception) << "no cycles of models";
    auto inner = AddOperator(sub, L"I", {}, {});
    EXPECT_EQ(inner->GetMainProcess(), model);
    EXPECT_EQ(model->GetSubModels(), std::vector<std::shared_ptr<Model>>{sub});

    Operator::ConnectParent(b, a, a->GetPort(L"Out"), b->GetPort(L"In"));
    auto modelPort = model->AliasPort(a->GetPort(L"In"), L"X");
    EXPECT_TRUE(model->RemoveOperator(a));
    EXPECT_FALSE(model->RemoveOperator(a));
    EXPECT_EQ(a->GetProcess(), nullptr);
    EXPECT_FALSE(b->IsParent(a));
    EXPECT_TRUE(b->GetPortConnections().empty());
    EXPECT_TRUE(modelPort->GetInnerAliasedPorts().empty());
    EXPECT_EQ(model->GetPort(L"X"), modelPort) << "the model port stays";
    other->AddOperator(a);
    EXPECT_EQ(a->GetProcess(), other);
}

TEST(ModelTest, StateFlagsAndPlainFormatQuery) {
    auto model = std::make_shared<Model>();
    EXPECT_EQ(model->GetObjectName().GetFullName(), L"TAMARIN.Model");
    EXPECT_EQ(model->GetColorCategory(), L"SubModel");
    EXPECT_TRUE(model->CanSaveInPlainFormat());
    model->SetPlainFormatForbidden(true);
    EXPECT_FALSE(model->CanSaveInPlainFormat());
    model->SetReadonly(true);
    model->SetLocked(true);
    model->SetProcessName(L"Slope");
    EXPECT_TRUE(model->IsReadonly());
    EXPECT_TRUE(model->IsLocked());
    EXPECT_EQ(model->GetProcessName(), L"Slope");
}

TEST(ModelTest, TextAnnotationsAreDictionariesInTheTextAttribute) {
    auto model = std::make_shared<Model>();
    auto note = std::make_shared<DictionaryData>();
    (*note)[L"String"] = L"Read me";
    (*note)[L"PositionX"] = 5;
    model->GetTextAnnotations()->Append(note);
    auto stored = std::dynamic_pointer_cast<ListData>(model->GetAttribute(L"Text"));
    ASSERT_TRUE(stored);
    ASSERT_EQ(stored->Size(), 1u);
    auto entry = std::dynamic_pointer_cast<DictionaryData>(stored->At(0));
    EXPECT_EQ((*entry)[L"String"].AsString(), L"Read me");
    EXPECT_EQ((*entry)[L"PositionX"].AsInt(), 5);
}

TEST(OperatorTest, PortsAndAttributes) {
    auto op = std::make_shared<Operator>(L"TEST", L"Thing");
    EXPECT_EQ(op->GetDisplayName(), L"Thing");
    auto p = op->GetOrCreatePort(L"P");
    EXPECT_EQ(op->GetOrCreatePort(L"P"), p);
    EXPECT_TRUE(p->IsInput());
    EXPECT_EQ(p->TryGetOperator(), op);
    EXPECT_THROW(op->AddPort(L"P", PortDirection::Output), QuarnLog::Exception);
    EXPECT_THROW(op->AddPort(L"", PortDirection::Output), QuarnLog::Exception);
    op->AddPort(L"Q", PortDirection::Output);
    EXPECT_THROW(op->RenamePort(L"P", L"Q"), QuarnLog::Exception);
    EXPECT_TRUE(op->RenamePort(L"P", L"R"));
    EXPECT_FALSE(op->RenamePort(L"P", L"S"));
    EXPECT_EQ(op->GetInputPorts(), std::vector<std::shared_ptr<Port>>{p});
    EXPECT_TRUE(op->RemovePort(L"R"));
    EXPECT_EQ(p->TryGetOperator(), nullptr);

    op->SetAttribute(L"PositionX", std::make_shared<IntData>(3));
    EXPECT_EQ(op->GetAttribute(L"PositionX")->ToString(), L"3");
    op->SetAttribute(L"PositionX", nullptr);
    EXPECT_FALSE(op->HasAttribute(L"PositionX"));
    EXPECT_EQ(op->GetMainProcess(), nullptr);

    Operator bare;
    EXPECT_THROW(bare.AddPort(L"X", PortDirection::Input), QuarnLog::Exception)
        << "not held by a shared pointer";
}

}  // namespace
