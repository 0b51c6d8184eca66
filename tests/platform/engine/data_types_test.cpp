#include <gtest/gtest.h>

#include <cmath>

#include "LattixBasic/Color.h"
#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/DataFactory.h"
#include "Velmar/Lattix/DataRef.h"
#include "Velmar/Lattix/DictionaryData.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/EnumData.h"
#include "Velmar/Lattix/EnumDataInterface.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/ListData.h"
#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/RasterData.h"
#include "Velmar/Lattix/StringData.h"
#include "Velmar/Lattix/StringListData.h"

using namespace Velmar::Lattix;

namespace {

struct TextCase {
    const wchar_t* type;
    const wchar_t* text;      // read with FromString
    const wchar_t* expected;  // ToString afterwards
};

class DataTextForm : public ::testing::TestWithParam<TextCase> {};

TEST_P(DataTextForm, ReadsWritesAndRoundTripsThroughJsonAndClone) {
    const auto& c = GetParam();
    auto value = DataFactory::Create(c.type);
    ASSERT_TRUE(value);
    EXPECT_EQ(value->GetDataTypeName().GetFullName(), c.type);
    value->FromString(c.text);
    EXPECT_EQ(value->ToString(), c.expected);

    auto copy = DataFactory::Create(c.type);
    copy->FromJson(value->ToJson());
    EXPECT_EQ(copy->ToJson(), value->ToJson());
    EXPECT_TRUE(copy->Equals(*value));

    auto clone = value->Clone();
    EXPECT_NE(clone.get(), value.get());
    EXPECT_TRUE(clone->Equals(*value));
    value->Initialize();
    EXPECT_EQ(clone->ToString(), c.expected) << "a clone shares nothing with its original";

    auto typed = DataFactory::FromTypedJson(DataFactory::ToTypedJson(*clone));
    EXPECT_TRUE(typed->Equals(*clone));
}

INSTANTIATE_TEST_SUITE_P(
    AllTypes, DataTextForm,
    ::testing::Values(
        TextCase{L"TAMARIN.Int", L" -42 ", L"-42"}, TextCase{L"TAMARIN.Int", L"+7", L"7"},
        TextCase{L"TAMARIN.Unsigned", L"18446744073709551615", L"18446744073709551615"},
        TextCase{L"TAMARIN.Double", L"2.5e3", L"2500"}, TextCase{L"TAMARIN.Double", L"0.1", L"0.1"},
        TextCase{L"TAMARIN.Double", L"-inf", L"-inf"}, TextCase{L"TAMARIN.Bool", L"YES", L"true"},
        TextCase{L"TAMARIN.Bool", L"0", L"false"},
        TextCase{L"TAMARIN.String", L"  a b ", L"  a b "},
        TextCase{L"TAMARIN.StringList", L"a, \"b, c\", \"say \"\"hi\"\"\", ",
                 L"a, \"b, c\", \"say \"\"hi\"\"\", \"\""},
        TextCase{L"TAMARIN.File", L"/data/dem.img", L"/data/dem.img"},
        TextCase{L"TAMARIN.List", L"1, 2.5, true, text", L"1, 2.5, true, text"},
        TextCase{L"TAMARIN.Raster", L"/d/x.tif;bands=1,3", L"/d/x.tif;bands=1,3"},
        TextCase{L"TAMARIN.Data", L"{\"a\":[1,2]}", L"{\"a\":[1,2]}"},
        TextCase{L"TAMARIN.Dictionary", L"{\"k\":{\"type\":\"TAMARIN.Int\",\"value\":3}}",
                 L"{\"k\":{\"type\":\"TAMARIN.Int\",\"value\":3}}"},
        TextCase{L"TAMARIN.Color", L"1, 0.5, 0", L"1, 0.5, 0"},
        TextCase{L"TAMARIN.FocalStatistic", L"median", L"Median"}));

struct BadText {
    const wchar_t* type;
    const wchar_t* text;
    const char* expectedInMessage;
};

class DataParseErrors : public ::testing::TestWithParam<BadText> {};

TEST_P(DataParseErrors, NameTextAndTypeAndLeaveValueUnchanged) {
    const auto& c = GetParam();
    auto value = DataFactory::Create(c.type);
    auto before = value->ToString();
    try {
        value->FromString(c.text);
        FAIL() << "accepted a bad text";
    } catch (const QuarnLog::Exception& error) {
        std::string message = error.what();
        EXPECT_NE(message.find(c.expectedInMessage), std::string::npos) << message;
    }
    EXPECT_EQ(value->ToString(), before);
}

INSTANTIATE_TEST_SUITE_P(
    AllTypes, DataParseErrors,
    ::testing::Values(BadText{L"TAMARIN.Int", L"12abc", "Cannot read \"12abc\" as TAMARIN.Int"},
                      BadText{L"TAMARIN.Int", L"99999999999999999999", "whole number"},
                      BadText{L"TAMARIN.Unsigned", L"-1", "TAMARIN.Unsigned"},
                      BadText{L"TAMARIN.Double", L"1,5", "as TAMARIN.Double"},
                      BadText{L"TAMARIN.Bool", L"maybe", "true or false"},
                      BadText{L"TAMARIN.File", L"a\nb", "line breaks"},
                      BadText{L"TAMARIN.StringList", L"a, \"b", "never closed"},
                      BadText{L"TAMARIN.Raster", L"/x;bands=0", "band numbers"},
                      BadText{L"TAMARIN.Dictionary", L"[1]", "JSON object"},
                      BadText{L"TAMARIN.Color", L"1, 2, 0", "from 0 to 1"},
                      BadText{L"TAMARIN.KernelShape", L"Hexagon", "one of Square, Circle, Cross"}));

TEST(DataJson, WrongShapesAreRefused) {
    struct Case {
        const wchar_t* type;
        nlohmann::json json;
    };
    const Case cases[] = {{L"TAMARIN.Int", "7"},
                          {L"TAMARIN.Int", 1.5},
                          {L"TAMARIN.Unsigned", -3},
                          {L"TAMARIN.Bool", 1},
                          {L"TAMARIN.StringList", {1}},
                          {L"TAMARIN.Raster", {{"bands", {1}}}},
                          {L"TAMARIN.Color", {{"red", 2}, {"green", 0}, {"blue", 0}}}};
    for (const auto& c : cases) {
        auto value = DataFactory::Create(c.type);
        EXPECT_THROW(value->FromJson(JsonValue(c.json)), QuarnLog::Exception) << c.json.dump();
    }
    EXPECT_THROW(DataFactory::FromTypedJson(JsonValue(nlohmann::json{{"value", 1}})),
                 QuarnLog::Exception);
}

TEST(DataFactoryTest, ListsEveryStandardTypeAndRefusesUnknownOnes) {
    auto types = DataFactory::GetListOfAllTypes();
    for (const wchar_t* name :
         {L"TAMARIN.Int", L"TAMARIN.Unsigned", L"TAMARIN.Double", L"TAMARIN.String",
          L"TAMARIN.StringList", L"TAMARIN.Bool", L"TAMARIN.File", L"TAMARIN.List",
          L"TAMARIN.Raster", L"TAMARIN.Data", L"TAMARIN.Dictionary", L"TAMARIN.Color"})
        EXPECT_NE(std::find(types.begin(), types.end(), ObjectName::Parse(name)), types.end())
            << name;
    EXPECT_FALSE(DataFactory::TryCreate(ObjectName(L"TAMARIN", L"Nope")));
    EXPECT_THROW(DataFactory::Create(L"TAMARIN.Nope"), QuarnLog::Exception);
    EXPECT_THROW(DataFactory::Create(L"NoDot"), QuarnLog::Exception);
    EXPECT_EQ(Data::DefaultTypeName().GetFullName(), L"TAMARIN.Data");
    EXPECT_EQ(IntData::DefaultTypeName().GetFullName(), L"TAMARIN.Int");
}

TEST(ObjectNameTest, SplitsExactlyTwoPieces) {
    EXPECT_EQ(ObjectName::Parse(L"TAMARIN.Int"), ObjectName(L"TAMARIN", L"Int"));
    for (const wchar_t* bad : {L"", L"Int", L".Int", L"TAMARIN.", L"a.b.c"}) {
        try {
            ObjectName::Parse(bad);
            FAIL() << "accepted a bad full name";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "Invalid full name format.");
        }
    }
}

TEST(JsonValueTest, EqualityIsJsonEquality) {
    EXPECT_EQ(JsonValue(nlohmann::json::parse(R"({"a":1,"b":[1,2]})")),
              JsonValue(nlohmann::json::parse(R"({"b":[1,2],"a":1})")));
    EXPECT_FALSE(JsonValue(nlohmann::json(1)) == JsonValue(nlohmann::json("1")));
    EXPECT_THROW(JsonValue::FromText("{bad"), QuarnLog::Exception);
}

TEST(DataRefTest, ReadsAndAssignsDictionaryEntries) {
    auto text = std::make_shared<DictionaryData>();
    (*text)[L"String"] = L"Hello";
    (*text)[L"PositionX"] = 12;
    (*text)[L"Size"] = 1.25;
    (*text)[L"Bold"] = true;
    (*text)[L"Color"] = std::make_shared<LattixBasic::Color>(1.0, 0.5, 0.0);
    EXPECT_EQ((*text)[L"String"].AsString(), L"Hello");
    EXPECT_EQ((*text)[L"PositionX"].AsInt(), 12);
    EXPECT_DOUBLE_EQ((*text)[L"PositionX"].AsDouble(), 12.0);
    EXPECT_EQ((*text)[L"Size"].AsInt(), 1);
    EXPECT_TRUE((*text)[L"Bold"].AsBool());
    EXPECT_TRUE((*text)[L"Font"].IsNull());
    EXPECT_FALSE((*text)[L"Italics"].AsBool());
    EXPECT_EQ((*text)[L"Font"].AsString(), L"");
    auto color = std::dynamic_pointer_cast<LattixBasic::Color>((*text)[L"Color"].AsData());
    ASSERT_TRUE(color);
    EXPECT_DOUBLE_EQ(color->GetGreen(), 0.5);
    (*text)[L"Bold"] = std::shared_ptr<Data>();
    EXPECT_TRUE((*text)[L"Bold"].IsNull());

    auto copy = DataFactory::Create(L"TAMARIN.Dictionary");
    copy->FromString(text->ToString());
    EXPECT_TRUE(copy->Equals(*text));
}

TEST(EnumDataTest, SelectsByName) {
    auto value = DataFactory::Create(L"TAMARIN.ZonalStatistic");
    auto* choice = dynamic_cast<EnumDataInterface*>(value.get());
    ASSERT_NE(choice, nullptr);
    EXPECT_EQ(choice->GetSelectedName(), L"Mean");
    EXPECT_TRUE(choice->SelectByName(L"count"));
    EXPECT_EQ(choice->GetSelectedName(), L"Count");
    EXPECT_FALSE(choice->SelectByName(L"Mode"));
    EXPECT_EQ(value->ToString(), L"Count");
}

TEST(ListDataTest, TypedItemsAndBounds) {
    ListData list;
    list.SetItemType(IntData::DefaultTypeName());
    list.FromString(L"1, 2, 3");
    ASSERT_EQ(list.Size(), 3u);
    EXPECT_EQ(list.At(2)->GetDataTypeName(), IntData::DefaultTypeName());
    EXPECT_THROW(list.At(3), QuarnLog::Exception);
    EXPECT_THROW(list.FromString(L"1, x"), QuarnLog::Exception);
    EXPECT_THROW(list.Append(nullptr), QuarnLog::Exception);
}

}  // namespace
