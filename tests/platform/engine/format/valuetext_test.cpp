// Value texts in a model file read to the same JSON, number kind included, whichever way the
// reader takes to read them.
#include <gtest/gtest.h>

#include <cmath>

#include <nlohmann/json.hpp>

#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/JsonValue.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "qtxt/Text.h"

using namespace Velmar::Lattix;

namespace {

std::shared_ptr<Data> ReadAttribute(const std::string& type, const std::string& text) {
    auto file =
        "<?xml version=\"1.0\"?>\n<LattixModel formatVersion=\"1\">\n"
        "  <Model namespace=\"TAMARIN\" name=\"Model\">\n"
        "    <Attribute name=\"V\" type=\"" +
        type + "\">" + text + "</Attribute>\n  </Model>\n</LattixModel>\n";
    auto model = ModelFormatFactory::OpenFromBuffer(qtxt::widen(file), L"");
    return model->GetAttribute(L"V");
}

TEST(ValueText, NumbersReadAsTheJsonParserReadsThem) {
    const char* texts[] = {"0",
                           "-0",
                           "7",
                           "-7",
                           "18446744073709551615",
                           "18446744073709551616",
                           "-9223372036854775808",
                           "-9223372036854775809",
                           "1.5",
                           "-0.0",
                           "2.5e3",
                           "1E-2",

                           "0.1",
                           "40.0",
                           "123456789.123456789",
                           "\"5\"",
                           "[1, 2.0, -3]",
                           "true",
                           "null"};
    for (const char* text : texts) {
        SCOPED_TRACE(text);
        auto value = ReadAttribute("TAMARIN.Data", text);
        ASSERT_TRUE(value);
        auto expected = nlohmann::json::parse(text);
        auto json = value->ToJson();
        const auto& got = json.GetJson();
        EXPECT_EQ(got.type(), expected.type());
        EXPECT_EQ(got, expected);
        EXPECT_EQ(got.dump(), expected.dump());
    }
}

TEST(ValueText, DoublesReadAsTheJsonParserReadsThem) {
    for (const char* text : {"0", "-0", "-0.0", "7", "-7", "1.5", "2.5e3", "1E-2", "0.1", "40.0",
                             "123456789.123456789", "18446744073709551615", "18446744073709551616",
                             "-9223372036854775809", "4.9e-324", "1.7976931348623157e308"}) {
        SCOPED_TRACE(text);
        auto value = std::dynamic_pointer_cast<DoubleData>(ReadAttribute("TAMARIN.Double", text));
        ASSERT_TRUE(value);
        double expected = nlohmann::json::parse(text).get<double>();
        EXPECT_EQ(value->GetValue(), expected);
        EXPECT_EQ(std::signbit(value->GetValue()), std::signbit(expected));
    }
}

// Values of several types in turn, and attributes beyond the usual few, read as they were saved.
TEST(ValueText, MixedTypesAndManyAttributesInOneFile) {
    std::string file =
        "<?xml version=\"1.0\"?>\n<LattixModel formatVersion=\"1\">\n"
        "  <Model namespace=\"TAMARIN\" name=\"Model\" displayName=\"Many\" icon=\"m.svg\" "
        "displayCategory=\"C\" colorCategory=\"SubModel\" usableInExpression=\"false\" uri=\"u\" "
        "processName=\"P\" readonly=\"false\" locked=\"true\" plainFormatForbidden=\"false\" "
        "x1=\"1\" x2=\"2\" x3=\"3\" id=\"0\">\n";
    const char* types[] = {"TAMARIN.Double", "TAMARIN.Int", "TAMARIN.String", "TAMARIN.Double"};
    const char* texts[] = {"1.5", "-3", "\"x\"", "2"};
    for (int i = 0; i < 4; ++i)
        file += std::string("    <Attribute name=\"V") + std::to_string(i) + "\" type=\"" +
                types[i] + "\">" + texts[i] + "</Attribute>\n";
    file += "  </Model>\n</LattixModel>\n";
    auto model = ModelFormatFactory::OpenFromBuffer(qtxt::widen(file), L"");
    EXPECT_EQ(model->GetDisplayName(), L"Many");
    EXPECT_EQ(model->GetProcessName(), L"P");
    EXPECT_TRUE(model->IsLocked());
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        auto value = model->GetAttribute(L"V" + std::to_wstring(i));
        ASSERT_TRUE(value);
        EXPECT_EQ(value->GetDataTypeName().GetFullName(), qtxt::widen(types[i]));
        EXPECT_EQ(value->ToJson().GetJson(), nlohmann::json::parse(texts[i]));
    }
}

TEST(ValueText, TextsThatAreNotJsonNumbersStillFail) {
    for (const char* text : {"01", "1.", ".5", "-", "+1", "1e", "inf", "nan", "0x10", "1 2", ""}) {
        SCOPED_TRACE(text);
        EXPECT_THROW(ReadAttribute("TAMARIN.Double", text), std::exception);
    }
}

}  // namespace
