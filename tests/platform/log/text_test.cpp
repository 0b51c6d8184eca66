#include <gtest/gtest.h>

#include "qtxt/Text.h"

using namespace qtxt;

TEST(TextTest, RoundTripsAllPlanes) {
    const std::wstring wide = L"ASCII caf\u00e9 \u00c5ngstr\u00f6m \u6c34\u6587 \U0001F30D \U0010FFFF";
    const std::string utf8 = DefaultWideToUTF8(wide);
    EXPECT_EQ(utf8,
              "ASCII caf\xc3\xa9 \xc3\x85ngstr\xc3\xb6m \xe6\xb0\xb4\xe6\x96\x87 "
              "\xf0\x9f\x8c\x8d \xf4\x8f\xbf\xbf");
    EXPECT_EQ(UTF8toDefaultWide(utf8), wide);
    EXPECT_EQ(widen(utf8), wide);
    EXPECT_EQ(dwiden(utf8), wide);
    EXPECT_EQ(narrow(wide), utf8);
}

struct MalformedCase {
    const char* name;
    std::string input;
    std::wstring expected;
};

TEST(TextTest, MalformedUtf8BecomesReplacementCharacter) {
    const std::vector<MalformedCase> cases = {
        {"lone continuation", "a\x80z", L"a\uFFFDz"},
        {"truncated 3-byte at end", "a\xe6\xb0", L"a\uFFFD"},
        {"truncated then ascii", "\xe6\xb0z", L"\uFFFDz"},
        {"overlong slash", "\xc0\xaf", L"\uFFFD\uFFFD"},
        {"overlong 3-byte", "\xe0\x80\xaf", L"\uFFFD\uFFFD\uFFFD"},
        {"encoded surrogate", "\xed\xa0\x80", L"\uFFFD\uFFFD\uFFFD"},
        {"beyond U+10FFFF", "\xf4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"invalid lead byte", "\xff", L"\uFFFD"},
        {"4-byte cut by ascii", "\xf0\x9f\x8cx", L"\uFFFDx"},
        {"empty", "", L""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(UTF8toDefaultWide(c.input), c.expected) << c.name;
    }
}

TEST(TextTest, InvalidWideValuesBecomeReplacementCharacter) {
    std::wstring bad;
    bad.push_back(static_cast<wchar_t>(0xD800));       // lone surrogate
    bad.push_back(static_cast<wchar_t>(0x110000));     // beyond Unicode
    bad.push_back(L'x');
    EXPECT_EQ(DefaultWideToUTF8(bad), "\xef\xbf\xbd\xef\xbf\xbdx");
}
