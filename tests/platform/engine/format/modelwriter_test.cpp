// The model writer's bytes are pugixml's own: parsing them with pugixml and saving them again with
// the same flags and indentation changes nothing, for models with awkward texts, every data type,
// nested sub-models, removed attributes and every kind of link. The models also read back equal.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <pugixml.hpp>

#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/DataFactory.h"
#include "Velmar/Lattix/DictionaryData.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/FileData.h"
#include "Velmar/Lattix/GenericData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/JsonValue.h"
#include "Velmar/Lattix/ListData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/StringData.h"
#include "Velmar/Lattix/StringListData.h"
#include "Velmar/Lattix/UnsignedData.h"
#include "examplemodels.h"
#include "modelcompare.h"
#include "xmltestsupport.h"

using namespace Velmar::Lattix;
using modelformat_test::ExpectSameOperator;

using xml_test::SameBytes;
using xml_test::StringSink;

namespace {

// Whether the element at `offset` (of its name) in `bytes` was written with an end tag. The parser
// keeps no empty text, so "<A></A>" reads like "<A />"; attribute values hold no raw quote.
bool HasEndTag(const std::string& bytes, std::ptrdiff_t offset) {
    bool quoted = false;
    for (auto i = static_cast<std::size_t>(offset); i < bytes.size(); ++i) {
        if (bytes[i] == '"') quoted = !quoted;
        if (bytes[i] == '>' && !quoted) return bytes[i - 1] != '/';
    }
    ADD_FAILURE() << "unterminated start tag at " << offset;
    return false;
}

void RestoreEmptyTexts(pugi::xml_node node, const std::string& bytes) {
    for (auto child : node.children()) {
        if (child.type() != pugi::node_element) continue;
        if (!child.first_child() && HasEndTag(bytes, child.offset_debug())) child.text().set("");
        RestoreEmptyTexts(child, bytes);
    }
}

// pugixml's own document for the bytes, saved as the model format saves: every text kept as it is
// (line ends too, and texts of blanks), indentation "  ".
std::string PugixmlResave(const std::string& bytes) {
    pugi::xml_document document;
    unsigned flags = (pugi::parse_default | pugi::parse_ws_pcdata_single) & ~pugi::parse_eol;
    auto result = document.load_buffer(bytes.data(), bytes.size(), flags, pugi::encoding_utf8);
    EXPECT_TRUE(result) << result.description() << " at " << result.offset;
    RestoreEmptyTexts(document, bytes);
    StringSink sink;
    document.save(sink, "  ", pugi::format_indent, pugi::encoding_utf8);
    return sink.text;
}

std::string Write(const Model& model) {
    return ModelFormatFactory::GetFormat(ModelFormatFactory::PlainFormatName)->Write(model);
}

std::shared_ptr<Model> Read(const std::string& bytes) {
    return ModelFormatFactory::GetFormat(ModelFormatFactory::PlainFormatName)
        ->Read(bytes, L"model text");
}

std::shared_ptr<Operator> Add(const std::shared_ptr<Model>& model, const std::wstring& name) {
    auto op = OperatorFactory::Create(L"TAMARIN", name);
    model->AddOperator(op);
    return op;
}

// Texts that the model reads back as they were written.
const std::vector<std::wstring>& KeptTexts() {
    static const std::vector<std::wstring> texts = {
        L"",
        L"plain",
        L"say \"hi\" & 'bye'",
        L"a < b > c && d",
        L"&amp; &lt; stay as typed",
        L"tab\there",
        L"line\nbreak",
        L"bell\x07 escape\x1b unit\x1f",
        L"]]> <!-- --> <?pi?>",
        L"caf\u00e9 \u4e2d\u6587 \U0001F600",
        L" padded text ",
        std::wstring(3000, L'w') + L" <&> " + std::wstring(500, L'\u00e9'),
    };
    return texts;
}

std::shared_ptr<Model> AwkwardTexts() {
    const auto& texts = KeptTexts();
    auto model = std::make_shared<Model>();
    model->SetDisplayName(L"Model \"awkward\" <&>");
    model->SetProcessName(L"process\twith\ttabs & \"quotes\"");
    model->SetDescription(texts.back());
    model->SetKeywords(texts);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        auto op = Add(model, i % 2 ? L"Add" : L"ScalarInput");
        const auto& text = texts[i];
        op->SetDisplayName(text);
        op->SetIcon(text);
        op->SetDisplayCategory(text);
        op->SetColorCategory(text);
        op->SetUri(text);
        op->SetDescription(text);
        op->SetKeywords({text, L"", text + text});
        op->SetSyntaxForms({text});
        op->SetUsableInExpression(i % 3 == 0);
        op->SetAttribute(L"Note " + text, std::make_shared<StringData>(text));
        op->SetAttribute(L"List " + text,
                         std::make_shared<StringListData>(std::vector<std::wstring>{text, L""}));
        for (const auto& port : op->GetPorts()) {
            port->SetDisplayName(text);
            port->SetDescription(text);
            port->SetKeywords({text});
            port->SetAttribute(L"Tip", std::make_shared<StringData>(text));
        }
        auto extra = op->AddPort(L"Extra " + text, PortDirection::Input);
        extra->SetSupportedTypes(
            {ObjectName(L"TAMARIN", L"String"), ObjectName(L"TAMARIN", L"File")});
        extra->SetData(std::make_shared<StringData>(text));
        extra->SetDefaultData(
            std::make_shared<FileData>(L"/data/" + std::to_wstring(i) + L" <&> \"\u00e9\".img"));
    }
    return model;
}

// Texts that XML or the model reader changes: the writer's bytes must still be pugixml's own.
std::shared_ptr<Model> ChangedTexts() {
    auto model = std::make_shared<Model>();
    const std::vector<std::wstring> texts = {
        L"carriage\rreturn\r\n",
        L" ",
        L"\t\n",
        std::wstring(L"\x01\x02\x0b\x0c\x0e"),
        std::wstring(1, static_cast<wchar_t>(0xD800)) + L" lone surrogate",
        std::wstring(1, static_cast<wchar_t>(0x110000)) + L" beyond Unicode",
        std::wstring(L"cut\0after", 9),
    };
    model->SetKeywords(texts);
    for (const auto& text : texts) {
        auto op = Add(model, L"Add");
        op->SetDisplayName(text);
        op->SetDescription(text);
        op->SetAttribute(L"Note " + text, std::make_shared<StringData>(text));
        op->GetPort(L"Input1")->SetDescription(text);
    }
    return model;
}

std::shared_ptr<Model> EveryDataType() {
    auto model = std::make_shared<Model>();
    auto op = Add(model, L"Add");
    for (const auto& type : DataFactory::GetListOfAllTypes()) {
        auto value = DataFactory::Create(type);
        op->SetAttribute(L"Fresh " + type.GetFullName(), value);
        model->GetTextAnnotations()->Append(DataFactory::Create(type));
    }
    std::vector<double> doubles = {0.0,
                                   -0.0,
                                   0.1,
                                   -2.5,
                                   40.0,
                                   123456789.0,
                                   1e15,
                                   1e16,
                                   1e-5,
                                   1e300,
                                   5e-324,
                                   std::numeric_limits<double>::max(),
                                   std::numeric_limits<double>::infinity(),
                                   -std::numeric_limits<double>::infinity()};
    for (std::size_t i = 0; i < doubles.size(); ++i)
        op->SetAttribute(L"Double " + std::to_wstring(i), std::make_shared<DoubleData>(doubles[i]));
    op->SetAttribute(L"Int min",
                     std::make_shared<IntData>(std::numeric_limits<std::int64_t>::min()));
    op->SetAttribute(L"Int max",
                     std::make_shared<IntData>(std::numeric_limits<std::int64_t>::max()));
    op->SetAttribute(L"Unsigned max",
                     std::make_shared<UnsignedData>(std::numeric_limits<std::uint64_t>::max()));
    op->SetAttribute(L"True", std::make_shared<BoolData>(true));
    op->SetAttribute(L"False", std::make_shared<BoolData>(false));
    op->SetAttribute(L"Null", nullptr);
    auto dictionary = std::make_shared<DictionaryData>();
    dictionary->Set(L"<key & \"quote\">", std::make_shared<StringData>(L"</Attribute>"));
    dictionary->Set(L"list", std::make_shared<ListData>(std::vector<std::shared_ptr<Data>>{
                                 std::make_shared<IntData>(-3), std::make_shared<DoubleData>(0.5),
                                 std::make_shared<StringData>(L"\u00e9\t\n")}));
    op->SetAttribute(L"Dictionary", dictionary);
    op->SetAttribute(L"Generic", std::make_shared<GenericData>(JsonValue::FromText(
                                     R"({"a": [1, 2.5, "x<y>&z"], "b": {"c": null}})")));
    auto port = op->GetPort(L"Input2");
    port->SetData(std::make_shared<DoubleData>(std::nan("")));
    port->SetDataTypeAttribute(ObjectName(L"TAMARIN", L"Double"), L"Unit",
                               std::make_shared<StringData>(L"m & \"ft\""));
    port->SetDataTypeAttribute(ObjectName(L"TAMARIN", L"Int"), L"Step",
                               std::make_shared<IntData>(2));
    return model;
}

// Attributes and ports a fresh operator has and these lack.
std::shared_ptr<Model> RemovedThings() {
    auto model = modelformat_test::RasterExpressionExample();
    for (const auto& op : model->GetOperators()) {
        for (const auto& [name, value] : op->GetAttributeMap()) op->RemoveAttribute(name);
        for (const auto& port : op->GetPorts()) {
            for (const auto& [name, value] : port->GetAttributeMap()) port->RemoveAttribute(name);
            for (const auto& [type, map] : port->GetDataTypeAttributeMapMap())
                for (const auto& [name, value] : map)
                    port->RemoveDataTypeAttribute(ObjectName::Parse(type), name);
        }
    }
    auto output = model->GetOperators().back();
    output->RemovePort(output->GetPorts().front()->GetName());
    return model;
}

// Models inside models, linked across levels.
std::shared_ptr<Model> Nested() {
    auto outer = std::make_shared<Model>();
    auto source = Add(outer, L"ScalarInput");
    std::shared_ptr<Model> holder = outer;
    for (int depth = 0; depth < 4; ++depth) {
        auto sub = std::make_shared<Model>(L"User", L"Level" + std::to_wstring(depth));
        sub->SetDisplayName(L"Level <" + std::to_wstring(depth) + L">");
        auto plus = Add(sub, L"Add");
        auto shown = Add(sub, L"ScalarOutput");
        Operator::ConnectParent(shown, plus, plus->GetPort(L"Output"), shown->GetPort(L"Value"));
        sub->AliasPort(plus->GetPort(L"Input1"), L"Value");
        plus->GetPort(L"Input2")->SetDataFromString(std::to_wstring(depth));
        holder->AddSubModel(sub);
        holder = sub;
    }
    auto first = outer->GetSubModels().front();
    Operator::ConnectParent(first, source, source->GetPort(L"Output"), first->GetPort(L"Value"));
    return outer;
}

// A chain like the benchmark's, with a few hundred operators.
std::shared_ptr<Model> Chain() {
    auto model = std::make_shared<Model>();
    std::shared_ptr<Operator> previous;
    for (int i = 0; i < 300; ++i) {
        bool input = i % 10 == 0;
        auto op = Add(model, input ? L"ScalarInput" : L"Add");
        op->SetAttribute(L"PositionX", std::make_shared<DoubleData>(40.0 * (i % 100)));
        op->SetAttribute(L"PositionY", std::make_shared<DoubleData>(60.0 * (i / 100) + 0.1));
        if (input) {
            op->GetPort(L"Value")->SetData(std::make_shared<DoubleData>(i * 0.5));
        } else {
            op->GetPort(L"Input2")->SetData(std::make_shared<IntData>(-i));
            if (previous)
                Operator::ConnectParent(op, previous, previous->GetPort(L"Output"),
                                        op->GetPort(L"Input1"));
        }
        previous = op;
    }
    return model;
}

struct Case {
    const char* name;
    std::shared_ptr<Model> model;
    // Whether every text survives XML and the reader unchanged.
    bool readsBackEqual;
};

std::vector<Case> Cases() {
    std::vector<Case> cases = {{"empty", std::make_shared<Model>(), true},
                               {"awkward texts", AwkwardTexts(), true},
                               {"changed texts", ChangedTexts(), false},
                               {"every data type", EveryDataType(), true},
                               {"removed things", RemovedThings(), true},
                               {"nested", Nested(), true},
                               {"chain", Chain(), true},
                               {"everything", modelformat_test::EverythingModel(), true}};
    for (const auto& [name, model] : modelformat_test::ExampleModels())
        cases.push_back({"example", model, true});
    return cases;
}

TEST(ModelWriter, BytesAreWhatPugixmlWritesForThem) {
    for (const auto& test : Cases()) {
        SCOPED_TRACE(test.name);
        auto bytes = Write(*test.model);
        EXPECT_TRUE(SameBytes(bytes, PugixmlResave(bytes)));
    }
}

TEST(ModelWriter, ModelsReadBackEqualAndWriteTheSameBytes) {
    for (const auto& test : Cases()) {
        if (!test.readsBackEqual) continue;
        SCOPED_TRACE(test.name);
        auto bytes = Write(*test.model);
        auto reopened = Read(bytes);
        ExpectSameOperator(*test.model, *reopened);
        EXPECT_TRUE(SameBytes(Write(*reopened), bytes));
    }
}

// pugixml reads "<A></A>" and "<A />" alike; the writer keeps the end tag of an emptied text, as
// pugixml writes a text set to "".
TEST(ModelWriter, EmptiedTextsKeepTheirEndTag) {
    auto model = std::make_shared<Model>();
    auto op = Add(model, L"Add");
    ASSERT_FALSE(op->GetDescription().empty());
    op->SetDescription(L"");
    op->SetKeywords({L""});
    auto bytes = Write(*model);
    EXPECT_NE(bytes.find("<Description></Description>"), std::string::npos) << bytes;
    EXPECT_NE(bytes.find("<Keyword></Keyword>"), std::string::npos) << bytes;
    EXPECT_TRUE(Read(bytes)->GetOperators().front()->GetDescription().empty());
}

// The check itself must be able to fail: bytes that are not pugixml's layout are told apart.
TEST(ModelWriter, ResavingNoticesForeignLayout) {
    std::string bytes = "<?xml version=\"1.0\"?>\n<A b='1'>\n    <C/>\n</A>\n";
    EXPECT_NE(bytes, PugixmlResave(bytes));
    EXPECT_EQ(PugixmlResave(bytes), "<?xml version=\"1.0\"?>\n<A b=\"1\">\n  <C />\n</A>\n");
    std::string emptyText = "<?xml version=\"1.0\"?>\n<A>\n  <B x=\"/>\"></B>\n  <C />\n</A>\n";
    EXPECT_EQ(PugixmlResave(emptyText), emptyText);
}

}  // namespace
