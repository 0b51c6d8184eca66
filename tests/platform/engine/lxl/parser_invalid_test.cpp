#include <gtest/gtest.h>

#include <string>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/Lxl/Parser.h"
#include "qtxt/Text.h"

using namespace Velmar::Lattix::Lxl;

namespace {

struct InvalidCase {
    const wchar_t* text;
    std::size_t position;  // 0-based
    const wchar_t* message;
};

// Each invalid text with where the error is reported and the whole message the user reads.
const InvalidCase kInvalid[] = {
    {L"", 0, L"Syntax error at column 1: expected an expression but found an empty text"},
    {L"   ", 3, L"Syntax error at column 4: expected an expression but found an empty text"},
    {L"(1 + 2", 6, L"Syntax error at column 7: expected ')' but found end of expression"},
    {L"1 +", 3, L"Syntax error at column 4: expected a value but found end of expression"},
    {L"1 2", 2,
     L"Syntax error at column 3: expected an operator or end of expression but found the number 2"},
    {L"$a = 1", 3,
     L"Syntax error at column 4: expected an operator or end of expression but found '=' (write "
     L"'==' to compare)"},
    {L"1 < 2 < 3", 6,
     L"Syntax error at column 7: comparisons cannot be chained; join them with 'and', as in $a < "
     L"$b and $b < $c"},
    {L"Sin $a", 0,
     L"Syntax error at column 1: expected a value but found the name 'Sin' (write $Sin for a port "
     L"or Sin(...) for an operator)"},
    {L"Max(1, )", 7, L"Syntax error at column 8: expected a value but found ')'"},
    {L"Max(1 2)", 6, L"Syntax error at column 7: expected ',' or ')' but found the number 2"},
    {L"a.b.c(1)", 3,
     L"Syntax error at column 4: expected '(' after the operator name a.b but found '.' (a "
     L"qualified name has one '.', as in Namespace.Name)"},
    {L"TAMARIN.(1)", 8,
     L"Syntax error at column 9: expected an operator name after 'TAMARIN.' but found '('"},
    {L"$ + 1", 1,
     L"Syntax error at column 2: expected a port name after '$' but found ' ' (port names are "
     L"letters, digits and '_'; quote others as $\"my port\")"},
    {L"$\"\"", 1, L"Syntax error at column 2: a port name must not be empty"},
    {L"\"open", 5,
     L"Syntax error at column 6: expected '\"' but found end of expression (the string begun at "
     L"column 1 is not closed)"},
    {L"'a\nb'", 2,
     L"Syntax error at line 1, column 3: expected \"'\" but found end of line (the string begun at "
     L"line 1, column 1 is not closed)"},
    {L"\"C:\\data\"", 3,
     L"Syntax error at column 4: unknown escape '\\' followed by 'd' (the escapes are \\\\ \\\" "
     L"\\' \\n \\r \\t \\u{hex}; write \\\\ for a backslash)"},
    {L"\"\\u{110000}\"", 1,
     L"Syntax error at column 2: expected a character code such as \\u{e9} (1 to 6 hexadecimal "
     L"digits, at most 10FFFF, not a surrogate or 0) after '\\u'"},
    {L"$a @ 2", 3, L"Syntax error at column 4: unexpected character '@'"},
    {L"$a & $b", 3, L"Syntax error at column 4: unexpected character '&' (write '&&' or 'and')"},
    {L"$a | $b", 3, L"Syntax error at column 4: unexpected character '|' (write '||' or 'or')"},
    {L"1\x07", 1, L"Syntax error at column 2: unexpected character U+0007"},
    {L"99999999999999999999", 0,
     L"Syntax error at column 1: the integer 99999999999999999999 is too large (the largest is "
     L"9223372036854775807; write a decimal such as 99999999999999999999.0 for larger values)"},
    {L"1e999", 0, L"Syntax error at column 1: the number 1e999 is out of range"},
    {L"$a ? 1", 6,
     L"Syntax error at column 7: expected ':' but found end of expression (a conditional is "
     L"written condition ? value : other value)"},
    {L"if($a, 1)", 8,
     L"Syntax error at column 9: expected ',' but found ')' (if takes a condition, a value when "
     L"true and a value when false)"},
    {L"if($a, 1, 2, 3)", 11,
     L"Syntax error at column 12: expected ')' but found ',' (if takes exactly three arguments)"},
    {L"IGNORE_VALUE 0", 0,
     L"Syntax error at column 1: the option IGNORE_VALUE can only be an argument of an operator "
     L"call"},
    {L"f($a, USE_VALUE {1, 2, ...})", 23,
     L"Syntax error at column 24: expected a value but found '...' (list further values or remove "
     L"the '...')"},
    {L"f(USE_VALUE {})", 13, L"Syntax error at column 14: expected a value but found '}'"},
    {L"f(USE_LOOKUP_TABLE {1})", 19, L"Syntax error at column 20: expected a value but found '{'"},
    {L"f(USEALL 1)", 9, L"Syntax error at column 10: expected ',' or ')' but found the number 1"},
    {L"$img()", 5, L"Syntax error at column 6: expected a layer number or range but found ')'"},
    {L"5(1)", 1,
     L"Syntax error at column 2: expected an operator or end of expression but found '('"},
    {L"$a and", 6, L"Syntax error at column 7: expected a value but found end of expression"},
    {L"1 +\n  * 2", 6, L"Syntax error at line 2, column 3: expected a value but found '*'"},
    {L"Sin(<value>)", 4,
     L"Replace the placeholder <value> at column 5 with a port reference, a value or an "
     L"expression"},
    {L"<Input1> + 1", 0,
     L"Replace the placeholder <Input1> at column 1 with a port reference, a value or an "
     L"expression"},
    {L"f(<a>, <b>)", 2,
     L"Replace the placeholders <a> (column 3), <b> (column 8) with port references, values or "
     L"expressions"},
};

TEST(LxlParse, InvalidExpressionsAreRefusedWithPositionAndExpectation) {
    for (const auto& c : kInvalid) {
        SCOPED_TRACE(qtxt::narrow(c.text));
        try {
            Parse(c.text);
            ADD_FAILURE() << "accepted";
        } catch (const SyntaxError& e) {
            EXPECT_EQ(e.WideMessage(), c.message);
            EXPECT_EQ(e.Position(), c.position);
            EXPECT_FALSE(e.Expected().empty());
            EXPECT_EQ(e.Function(), "Velmar::Lattix::Lxl::Parse");
        }
    }
}

TEST(LxlParse, ErrorsCarryLineAndColumn) {
    try {
        Parse(L"$a +\n\n  $b +");
        FAIL() << "accepted";
    } catch (const SyntaxError& e) {
        EXPECT_EQ(e.Position(), 12u);
        EXPECT_EQ(e.Line(), 3u);
        EXPECT_EQ(e.Column(), 7u);
        EXPECT_EQ(e.Expected(), L"a value");
    }
}

TEST(LxlParse, UnknownFunctionIsReportedAtItsName) {
    ParseOptions options;
    options.isFunction = [](const std::wstring& name) { return name == L"Sin"; };
    try {
        Parse(L"Sin($a) + TAMARIN.Tan($a)", options);
        FAIL() << "accepted";
    } catch (const SyntaxError& e) {
        EXPECT_EQ(e.WideMessage(), L"Unknown function 'TAMARIN.Tan' at column 11");
        EXPECT_EQ(e.Position(), 10u);
    }
}

TEST(LxlParse, SyntaxErrorIsAQuarnLogException) {
    try {
        Parse(L"(");
        FAIL() << "accepted";
    } catch (const QuarnLog::Exception& e) {
        EXPECT_EQ(std::string(e.what()),
                  "Syntax error at column 2: expected a value but found end of expression");
    }
}

// Hostile nesting must end in an error, never in a stack overflow; run this under the sanitizer
// build too, whose frames are much larger.
TEST(LxlParse, DeepNestingIsRefusedCleanly) {
    const struct {
        std::wstring text;
        const wchar_t* fragment;
    } cases[] = {
        {std::wstring(100000, L'('), L"nested too deeply (more than 256 levels"},
        {std::wstring(100000, L'-') + L"1", L"nested too deeply (more than 256 levels"},
        {std::wstring(50000, L'!') + L"true", L"nested too deeply"},
    };
    for (const auto& c : cases) {
        try {
            Parse(c.text);
            ADD_FAILURE() << "accepted";
        } catch (const SyntaxError& e) {
            EXPECT_NE(e.WideMessage().find(c.fragment), std::wstring::npos)
                << qtxt::narrow(e.WideMessage());
        }
    }
    std::wstring conditionals;
    for (int i = 0; i < 100000; ++i) conditionals += L"$a ? 1 : ";
    EXPECT_THROW(Parse(conditionals + L"0"), SyntaxError);
    std::wstring thenBranches;
    for (int i = 0; i < 100000; ++i) thenBranches += L"$a ? ";
    EXPECT_THROW(Parse(thenBranches + L"0"), SyntaxError);
    std::wstring powers = L"2";
    for (int i = 0; i < 100000; ++i) powers += L" ^ 2";
    EXPECT_THROW(Parse(powers), SyntaxError);
    std::wstring layers = L"$a";
    for (int i = 0; i < 100000; ++i) layers += L"(1)";
    EXPECT_THROW(Parse(layers), SyntaxError);
    std::wstring calls;
    for (int i = 0; i < 20000; ++i) calls += L"f(";
    EXPECT_THROW(Parse(calls + L"1"), SyntaxError);

    // Alternating operators cannot be flattened; their height is bounded too.
    std::wstring alternating = L"$a";
    for (int i = 0; i < 5000; ++i) alternating += (i % 2 ? L" + $a" : L" - $a");
    try {
        Parse(alternating);
        FAIL() << "accepted";
    } catch (const SyntaxError& e) {
        EXPECT_NE(e.WideMessage().find(L"more than 1000 levels"), std::wstring::npos);
    }
}

TEST(LxlParse, LongFlatExpressionsAreFine) {
    std::wstring text = L"$a";
    for (int i = 0; i < 20000; ++i) text += L" + $a * " + std::to_wstring(i);
    const auto tree = Parse(text);
    EXPECT_EQ(tree->Children().size(), 20001u);
    EXPECT_EQ(tree->Height(), 3u);
    std::wstring nested = std::wstring(200, L'(') + L"1" + std::wstring(200, L')');
    EXPECT_EQ(Dump(*Parse(nested)), L"1");
}

}  // namespace

namespace {

TEST(LxlParse, TallestAcceptedTreeSurvivesEveryWalk) {
    std::wstring text = L"$a";
    for (int i = 0; i < 990; ++i) text += (i % 2 ? L" + $a" : L" - $a");
    const auto tree = Parse(text);
    EXPECT_GT(tree->Height(), 980u);
    EXPECT_EQ(Dump(*Parse(ToText(*tree))), Dump(*tree));
    EXPECT_EQ(ReferencedPorts(*tree), std::vector<std::wstring>{L"a"});
}

// Random soups of LXL fragments: every one either parses, and then reads back from its canonical
// text, or fails with a SyntaxError inside the text; nothing else may happen.
TEST(LxlParse, RandomTextEitherParsesAndRoundTripsOrFailsCleanly) {
    const wchar_t* fragments[] = {
        L"$a",
        L"$\"p q\"",
        L"<v>",
        L"1",
        L"2.5e3",
        L"\"s\\n\"",
        L"'",
        L"\"",
        L"(",
        L")",
        L"{",
        L"}",
        L",",
        L":",
        L"?",
        L"+",
        L"-",
        L"*",
        L"/",
        L"%",
        L"^",
        L"==",
        L"!=",
        L"<",
        L"<=",
        L">",
        L">=",
        L"&&",
        L"||",
        L"!",
        L"and",
        L"or",
        L"not",
        L"if",
        L"true",
        L"Sin",
        L"A.B",
        L".",
        L"...",
        L" ",
        L"\n",
        L"=",
        L"@",
        L"USEALL",
        L"IGNORE_VALUE",
        L"USE_LOOKUP_TABLE",
        L"\\",
        L"\x00e9",
        L"$",
    };
    const std::size_t count = sizeof fragments / sizeof fragments[0];
    std::uint64_t state = 0x9e3779b97f4a7c15ull;
    auto next = [&state]() {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return state;
    };
    ParseOptions options;
    options.allowPlaceholders = true;
    std::size_t parsed = 0;
    for (int round = 0; round < 20000; ++round) {
        std::wstring text;
        const std::size_t length = 1 + next() % 12;
        for (std::size_t i = 0; i < length; ++i) text += fragments[next() % count];
        try {
            const auto tree = Parse(text, options);
            ++parsed;
            const std::wstring canonical = ToText(*tree);
            ASSERT_EQ(Dump(*Parse(canonical, options)), Dump(*tree)) << qtxt::narrow(text);
        } catch (const SyntaxError& e) {
            ASSERT_LE(e.Position(), text.size()) << qtxt::narrow(text);
            ASSERT_FALSE(e.WideMessage().empty());
        }
    }
    EXPECT_GT(parsed, 100u);
}

}  // namespace
