// Value texts in a model file read to the same JSON, number kind included, whichever way the
// reader takes to read them; the writer writes plain numbers and flags as their JSON text.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include <nlohmann/json.hpp>

#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/JsonValue.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "Velmar/Lattix/StringData.h"
#include "Velmar/Lattix/UnsignedData.h"
#include "format/valuetext.h"
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

// The plain value text of data, and whether it is what the JSON document writes.
void ExpectPlainText(const Data& data) {
    std::array<char, format::PlainValueTextCapacity> buffer;
    auto text = format::PlainValueText(data, buffer);
    EXPECT_FALSE(text.empty());
    EXPECT_EQ(std::string(text), data.ToJson().ToText());
}

TEST(ValueText, PlainDoublesWrittenAsTheirJsonText) {
    const double values[] = {0.0,
                             -0.0,
                             1.0,
                             -1.0,
                             0.1,
                             0.5,
                             1.5,
                             40.0,
                             123456789.0,
                             123456789.123456789,
                             1e15,
                             1e16,
                             1e17,
                             123456789012345678.0,
                             1e-4,
                             1e-5,
                             0.00012345,
                             1e300,
                             -1e300,
                             1e-300,
                             5e-324,
                             -5e-324,
                             2.2250738585072014e-308,
                             std::numeric_limits<double>::max(),
                             std::numeric_limits<double>::lowest(),
                             std::numeric_limits<double>::epsilon(),
                             3.141592653589793,
                             2.0 / 3.0,
                             9007199254740993.0};
    for (double value : values) {
        SCOPED_TRACE(value);
        ExpectPlainText(DoubleData(value));
    }
    // Any bit pattern that is a finite number.
    std::mt19937_64 random(7);
    for (int i = 0; i < 200000; ++i) {
        double value = std::bit_cast<double>(random());
        if (!std::isfinite(value)) continue;
        ExpectPlainText(DoubleData(value));
        if (testing::Test::HasFailure()) break;
    }
    // Short decimals, as models mostly hold.
    for (int i = -20000; i <= 20000; ++i) {
        ExpectPlainText(DoubleData(i * 0.5));
        ExpectPlainText(DoubleData(i / 100.0));
        if (testing::Test::HasFailure()) break;
    }
}

TEST(ValueText, PlainIntegersAndFlagsWrittenAsTheirJsonText) {
    for (std::int64_t value :
         {std::int64_t{0}, std::int64_t{1}, std::int64_t{-1}, std::int64_t{9}, std::int64_t{10},
          std::int64_t{-10}, std::int64_t{1234567890123}, std::numeric_limits<std::int64_t>::max(),
          std::numeric_limits<std::int64_t>::min()})
        ExpectPlainText(IntData(value));
    for (std::uint64_t value : {std::uint64_t{0}, std::uint64_t{7}, std::uint64_t{100},
                                std::numeric_limits<std::uint64_t>::max()})
        ExpectPlainText(UnsignedData(value));
    ExpectPlainText(BoolData(true));
    ExpectPlainText(BoolData(false));
}

// A type derived from a plain one may write its JSON differently.
class HalfDouble : public DoubleData {
public:
    using DoubleData::DoubleData;
};

TEST(ValueText, OtherValuesAreLeftToTheirJsonDocument) {
    std::array<char, format::PlainValueTextCapacity> buffer;
    for (double value :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()})
        EXPECT_TRUE(format::PlainValueText(DoubleData(value), buffer).empty());
    EXPECT_TRUE(format::PlainValueText(StringData(L"1.5"), buffer).empty());
    EXPECT_TRUE(format::PlainValueText(HalfDouble(1.5), buffer).empty());
}

}  // namespace
