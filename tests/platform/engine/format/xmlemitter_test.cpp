// The XML emitter against pugixml: the same documents, built once through pugixml's document and
// once through the emitter, must come out as the same bytes.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <pugixml.hpp>

#include "QuarnLog/Exception.h"
#include "format/xmlemitter.h"
#include "qtxt/Text.h"
#include "xmltestsupport.h"

using Velmar::Lattix::format::XmlEmitter;

using xml_test::SameBytes;
using xml_test::StringSink;

namespace {

std::string Save(const pugi::xml_document& document) {
    StringSink sink;
    document.save(sink, "  ", pugi::format_indent, pugi::encoding_utf8);
    return sink.text;
}

std::string U8(const std::wstring& text) {
    return qtxt::DefaultWideToUTF8(text);
}

// Texts that need every kind of care, wide as the model holds them.
const std::vector<std::wstring>& AwkwardTexts() {
    static const std::vector<std::wstring> texts = {
        L"",
        L"plain",
        L"say \"hi\" & 'bye'",
        L"a < b > c",
        L"&amp; is not an entity here",
        L"tab\there",
        L"line\nbreak",
        L"carriage\rreturn\r\n",
        L"  leading and trailing  ",
        L" ",
        L"\t\n",
        std::wstring(L"bell\x07 and unit\x1f separator"),
        std::wstring(L"\x01\x02\x0b\x0c\x0e\x1b"),
        L"del\x7f",
        L"]]> and <!-- and <?pi?>",
        L"caf\u00e9 \u4e2d\u6587 \U0001F600",
        std::wstring(1, static_cast<wchar_t>(0xD800)) + L" lone surrogate",
        std::wstring(1, static_cast<wchar_t>(0x110000)) + L" beyond Unicode",
        std::wstring(1, static_cast<wchar_t>(-1)) + L" negative",
        std::wstring(L"cut\0after NUL", 13),
        std::wstring(1000, L'x') + L"<&>\"" + std::wstring(700, L'\u00e9'),
    };
    return texts;
}

TEST(XmlEmitter, EmptyDocumentHasTheDeclarationAndRoot) {
    XmlEmitter out(0);
    out.StartElement("Root");
    out.EndElement();
    pugi::xml_document document;
    document.append_child("Root");
    EXPECT_TRUE(SameBytes(out.Finish(), Save(document)));
}

TEST(XmlEmitter, AwkwardAttributesAndTextsAsPugixmlWritesThem) {
    pugi::xml_document document;
    auto root = document.append_child("Root");
    XmlEmitter out(0);
    out.StartElement("Root");
    for (const auto& text : AwkwardTexts()) {
        auto node = root.append_child("Item");
        node.append_attribute("wide").set_value(U8(text).c_str());
        node.append_attribute("narrow").set_value(U8(text).c_str());
        node.text().set(U8(text).c_str());
        out.StartElement("Item");
        out.Attribute("wide", text);
        out.Attribute("narrow", U8(text));
        out.Text(text);
        out.EndElement();

        auto narrow = root.append_child("Narrow");
        narrow.text().set(U8(text).c_str());
        out.StartElement("Narrow");
        out.Text(U8(text));
        out.EndElement();
    }
    out.EndElement();
    EXPECT_TRUE(SameBytes(out.Finish(), Save(document)));
}

TEST(XmlEmitter, NumbersEmptyElementsAndMixedContent) {
    pugi::xml_document document;
    auto root = document.append_child("Root");
    root.append_attribute("version").set_value(1);
    XmlEmitter out(0);
    out.StartElement("Root");
    out.Attribute("version", std::int64_t{1});
    for (long long value : {0LL, -1LL, 42LL, 2147483647LL, -2147483648LL}) {
        auto node = root.append_child("Number");
        node.append_attribute("value").set_value(value);
        out.StartElement("Number");
        out.Attribute("value", std::int64_t{value});
        out.EndElement();
    }
    // Text before a child, and a child before text.
    auto first = root.append_child("TextFirst");
    first.text().set("t");
    first.append_child("Child");
    out.StartElement("TextFirst");
    out.Text(std::string_view("t"));
    out.StartElement("Child");
    out.EndElement();
    out.EndElement();
    auto second = root.append_child("ChildFirst");
    second.append_child("Child").append_child("Grandchild");
    second.text().set("t");
    out.StartElement("ChildFirst");
    out.StartElement("Child");
    out.StartElement("Grandchild");
    out.EndElement();
    out.EndElement();
    out.Text(std::string_view("t"));
    out.EndElement();
    out.EndElement();
    EXPECT_TRUE(SameBytes(out.Finish(), Save(document)));
}

// Random trees over the awkward texts: elements nest, carry attributes and now and then a text.
TEST(XmlEmitter, RandomDocumentsAsPugixmlWritesThem) {
    std::mt19937 random(20240611);
    const auto& texts = AwkwardTexts();
    const char* names[] = {"A", "Bee", "Operator", "Port", "x"};
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        pugi::xml_document document;
        XmlEmitter out(0);
        auto pick = [&random](std::size_t count) {
            return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
        };
        auto build = [&](auto& self, pugi::xml_node parent, int depth) -> void {
            const char* name = names[pick(std::size(names))];
            auto node = parent.append_child(name);
            out.StartElement(name);
            for (std::size_t i = pick(4); i > 0; --i) {
                const char* attribute = names[pick(std::size(names))];
                const auto& value = texts[pick(texts.size())];
                node.append_attribute(attribute).set_value(U8(value).c_str());
                out.Attribute(attribute, value);
            }
            if (pick(3) == 0) {
                const auto& text = texts[pick(texts.size())];
                node.text().set(U8(text).c_str());
                out.Text(text);
            } else if (depth < 5) {
                for (std::size_t i = pick(4); i > 0; --i) self(self, node, depth + 1);
            }
            out.EndElement();
        };
        build(build, document, 0);
        EXPECT_TRUE(SameBytes(out.Finish(), Save(document)));
    }
}

TEST(XmlEmitter, RestoreTakesBackAnElement) {
    pugi::xml_document document;
    auto root = document.append_child("Root");
    root.append_child("Kept").append_attribute("a").set_value("1");
    XmlEmitter out(0);
    out.StartElement("Root");
    out.StartElement("Kept");
    out.Attribute("a", std::string_view("1"));
    auto mark = out.GetMark();
    out.StartElement("Dropped");
    out.Attribute("b", std::string_view("2"));
    out.StartElement("Inner");
    out.Text(std::string_view("text"));
    EXPECT_GT(out.Size(), mark.size);
    out.Restore(mark);
    EXPECT_EQ(out.Size(), mark.size);
    out.EndElement();
    out.EndElement();
    EXPECT_TRUE(SameBytes(out.Finish(), Save(document)));
}

TEST(XmlEmitter, MisuseIsReported) {
    XmlEmitter unended(0);
    unended.StartElement("Open");
    EXPECT_THROW(unended.Finish(), QuarnLog::Exception);

    XmlEmitter late(0);
    late.StartElement("Root");
    late.Text(std::string_view("text"));
    EXPECT_THROW(late.Attribute("a", std::string_view("1")), QuarnLog::Exception);

    XmlEmitter unbalanced(0);
    EXPECT_THROW(unbalanced.EndElement(), QuarnLog::Exception);
}

}  // namespace
