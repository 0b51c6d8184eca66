#include <gtest/gtest.h>

#include <string>

#include "Velmar/Lattix/Lxl/Parser.h"
#include "qtxt/Text.h"

using namespace Velmar::Lattix::Lxl;

namespace {

ParseOptions WithPlaceholders() {
    ParseOptions options;
    options.allowPlaceholders = true;
    return options;
}

struct ValidCase {
    const wchar_t* text;
    const wchar_t* dump;
};

// Each expression with the tree it must give; the table covers every node kind, every operator,
// the precedence levels and their associativity.
const ValidCase kValid[] = {
    // literals
    {L"42", L"42"},
    {L"007", L"7"},
    {L"3.25", L"3.25"},
    {L".5", L"0.5"},
    {L"1e3", L"1000.0"},
    {L"2.5E-3", L"0.0025"},
    {L"1e+300", L"1e+300"},
    {L"9223372036854775807", L"9223372036854775807"},
    {L"\"text\"", L"\"text\""},
    {L"'single'", L"\"single\""},
    {L"\"a\\\"b\\\\c\\n\\t\\u{e9}\"", L"\"a\\\"b\\\\c\\n\\té\""},
    {L"'it\\'s'", L"\"it's\""},
    {L"true", L"true"},
    {L"FALSE", L"false"},
    // ports and placeholders
    {L"$Input1", L"$Input1"},
    {L"$1st_band", L"$1st_band"},
    {L"$\"my port\"", L"$\"my port\""},
    {L"$'x-y'", L"$\"x-y\""},
    {L"<value>", L"<value>"},
    // arithmetic, precedence and associativity
    {L"1 + 2 * $a", L"(+ 1 (* 2 $a))"},
    {L"(1 + 2) * $a", L"(* (+ 1 2) $a)"},
    {L"1 + 2 + 3", L"(+ 1 2 3)"},
    {L"1 - 2 - 3", L"(- 1 2 3)"},
    {L"1 + 2 - 3 + 4", L"(+ (- (+ 1 2) 3) 4)"},
    {L"1 - (2 - 3)", L"(- 1 (- 2 3))"},
    {L"$a * $b / $c % 4", L"(% (/ (* $a $b) $c) 4)"},
    {L"2 ^ 3 ^ 2", L"(^ 2 (^ 3 2))"},
    {L"-2 ^ 2", L"(- (^ 2 2))"},
    {L"2 ^ -1", L"(^ 2 (- 1))"},
    {L"--$a", L"(- (- $a))"},
    {L"-$a * 3", L"(* (- $a) 3)"},
    // comparison and logic
    {L"$a + 1 >= $b * 2", L"(>= (+ $a 1) (* $b 2))"},
    {L"$a == 1 or $b != 2 and $c < 3", L"(or (== $a 1) (and (!= $b 2) (< $c 3)))"},
    {L"$a <= 1 || $b > 2 && !$c", L"(or (<= $a 1) (and (> $b 2) (not $c)))"},
    {L"NOT $a AND $b", L"(and (not $a) $b)"},
    {L"not ($a == 1)", L"(not (== $a 1))"},
    {L"$a<$b", L"(< $a $b)"},
    // conditionals
    {L"if($a > 0, $a, 0)", L"(if (> $a 0) $a 0)"},
    {L"$a > 0 ? $a : -$a", L"(if (> $a 0) $a (- $a))"},
    {L"$a ? 1 : $b ? 2 : 3", L"(if $a 1 (if $b 2 3))"},
    // calls and options
    {L"Sin($a)", L"(call Sin $a)"},
    {L"TAMARIN.Max($a, $b, 3)", L"(call TAMARIN.Max $a $b 3)"},
    {L"Random()", L"(call Random)"},
    {L"Sin(<value>)", L"(call Sin <value>)"},
    {L"FocalMean($dem, 3, IGNORE_VALUE 0)", L"(call FocalMean $dem 3 (option IGNORE_VALUE 0))"},
    {L"FocalMean($dem, 3, USE_VALUE { 1 , 2 , -3 })",
     L"(call FocalMean $dem 3 (option USE_VALUE (list 1 2 (- 3))))"},
    {L"Focal($a, NO_APPLY_AT_VALUE $mask, APPLY_LOOKUP_TABLE $lut)",
     L"(call Focal $a (option NO_APPLY_AT_VALUE $mask) (option APPLY_LOOKUP_TABLE $lut))"},
    {L"Zonal($z, $v, IGNORE)", L"(call Zonal $z $v (option IGNORE))"},
    {L"Zonal($z, $v, USEALL)", L"(call Zonal $z $v (option USEALL))"},
    {L"ICA($img, ICASORT_SKEWxKURT)", L"(call ICA $img (option ICASORT_SKEWxKURT))"},
    {L"IgnoreNoData($a)", L"(call IgnoreNoData $a)"},
    // layer lists
    {L"$img(1)", L"(layers $img 1)"},
    {L"$img ( 1:3, 5 )", L"(layers $img (range 1 3) 5)"},
    {L"$img( <rangelist> )", L"(layers $img <rangelist>)"},
    {L"Stack($a, $b)(2)", L"(layers (call Stack $a $b) 2)"},
    {L"($a + $b)(1) * 2", L"(* (layers (+ $a $b) 1) 2)"},
    {L"$img($n - 1 : $n + 1)", L"(layers $img (range (- $n 1) (+ $n 1)))"},
    // documented examples
    {L"if($dem > 1000, FocalMean($dem, 3, IGNORE_VALUE -9999), $dem * 0.3048)",
     L"(if (> $dem 1000) (call FocalMean $dem 3 (option IGNORE_VALUE (- 9999))) (* $dem 0.3048))"},
    {L"$img($c ? 1 : 2 : 4)", L"(layers $img (range (if $c 1 2) 4))"},
    {L"not not $a", L"(not (not $a))"},
    {L"$\"H\u00f6he\" + $\"rain fall\"", L"(+ $\"H\u00f6he\" $\"rain fall\")"},
    {L"USE_VALUE_OF(USE_VALUE $classes)", L"(call USE_VALUE_OF (option USE_VALUE $classes))"},
    // layout
    {L"  $a\n  + \t$b\r\n", L"(+ $a $b)"},
};

TEST(LxlParse, ValidExpressionsGiveTheirTrees) {
    for (const auto& c : kValid) {
        SCOPED_TRACE(c.text);
        const auto tree = Parse(c.text, WithPlaceholders());
        ASSERT_TRUE(tree);
        EXPECT_EQ(Dump(*tree), c.dump);
    }
}

TEST(LxlParse, CanonicalTextReadsBackAsTheSameTree) {
    for (const auto& c : kValid) {
        SCOPED_TRACE(c.text);
        const auto tree = Parse(c.text, WithPlaceholders());
        const std::wstring text = ToText(*tree);
        const auto again = Parse(text, WithPlaceholders());
        EXPECT_EQ(Dump(*again), Dump(*tree)) << "canonical text: " << qtxt::narrow(text);
        EXPECT_EQ(ToText(*again), text);
    }
}

}  // namespace

namespace {

struct CanonicalCase {
    const wchar_t* text;
    const wchar_t* canonical;
};

const CanonicalCase kCanonical[] = {
    {L"1+2*$a", L"1 + 2 * $a"},
    {L"(1+2)*$a", L"(1 + 2) * $a"},
    {L"(1+2)+3", L"(1 + 2) + 3"},
    {L"1-(2-3)", L"1 - (2 - 3)"},
    {L"(-2)^2", L"(-2) ^ 2"},
    {L"-(2^2)", L"-2 ^ 2"},
    {L"(2^3)^2", L"(2 ^ 3) ^ 2"},
    {L"-($a+1)", L"-($a + 1)"},
    {L"!($a&&$b)||$c", L"not ($a and $b) or $c"},
    {L"($a<1)==true", L"($a < 1) == true"},
    {L"$a>0?1:2", L"if($a > 0, 1, 2)"},
    {L"f(IGNORE_VALUE{1,2},USEALL)", L"f(IGNORE_VALUE {1, 2}, USEALL)"},
    {L"(5)(1)", L"(5)(1)"},
    {L"$\"a b\"(1:2)", L"$\"a b\"(1:2)"},
    {L"1.0", L"1.0"},
    {L"1e21", L"1e+21"},
    {L"\"tab\\there\"", L"\"tab\\there\""},
};

TEST(LxlToText, PrintsCanonicalText) {
    for (const auto& c : kCanonical) {
        SCOPED_TRACE(c.text);
        const auto tree = Parse(c.text);
        const std::wstring text = ToText(*tree);
        EXPECT_EQ(text, c.canonical);
        EXPECT_EQ(Dump(*Parse(text)), Dump(*tree));
    }
}

TEST(LxlParse, NodesKnowTheirSpansAndValues) {
    const std::wstring text = L"Max($a, 2.5) + \"s\"";
    const auto tree = Parse(text);
    ASSERT_EQ(tree->Kind(), NodeKind::Binary);
    EXPECT_EQ(tree->Binary(), BinaryOperator::Add);
    EXPECT_EQ(tree->Span(), (SourceSpan{0, text.size()}));
    const auto& call = *tree->Children()[0];
    EXPECT_EQ(call.Kind(), NodeKind::Call);
    EXPECT_EQ(call.Text(), L"Max");
    EXPECT_EQ(call.Span(), (SourceSpan{0, 12}));
    const auto& port = *call.Children()[0];
    EXPECT_EQ(port.Span(), (SourceSpan{4, 6}));
    EXPECT_EQ(port.Text(), L"a");
    const auto& number = *call.Children()[1];
    EXPECT_FALSE(number.IsInteger());
    EXPECT_DOUBLE_EQ(number.NumberValue(), 2.5);
    EXPECT_EQ(number.Span(), (SourceSpan{8, 11}));
    const auto& str = *tree->Children()[1];
    EXPECT_EQ(str.Kind(), NodeKind::String);
    EXPECT_EQ(str.Text(), L"s");
    EXPECT_EQ(str.Span(), (SourceSpan{15, 18}));
    EXPECT_EQ(tree->Height(), 3u);

    const std::wstring withOption = L"f(USE_LOOKUP_TABLE $t, USE_VALUE {1, 2})";
    const auto options = Parse(withOption);
    EXPECT_EQ(options->Children()[0]->Span(), (SourceSpan{2, 21}));
    EXPECT_EQ(options->Children()[1]->Span(), (SourceSpan{23, 39}));
    EXPECT_EQ(options->Children()[1]->Children()[0]->Span(), (SourceSpan{33, 39}));

    const auto integer = Parse(L"9223372036854775807");
    EXPECT_TRUE(integer->IsInteger());
    EXPECT_EQ(integer->IntegerValue(), INT64_MAX);
}

TEST(LxlReferencedPorts, FirstAppearanceOrderWithoutDuplicates) {
    const struct {
        const wchar_t* text;
        std::vector<std::wstring> ports;
    } cases[] = {
        {L"1 + 2", {}},
        {L"$b + $a * $b - $c", {L"b", L"a", L"c"}},
        {L"f($x, IGNORE_VALUE {$y, $x}, USE_LOOKUP_TABLE $t)($z:$y)", {L"x", L"y", L"t", L"z"}},
        {L"$\"two words\" > 0 ? $\"two words\" : $Input1", {L"two words", L"Input1"}},
        {L"\"$notaport\"", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(ReferencedPorts(*Parse(c.text)), c.ports);
    }
}

TEST(LxlParse, PlaceholdersAreNodesWhenAllowed) {
    const auto tree = Parse(L"IGNORE_VALUE_OF(<value1>, <value2>) + <x>", WithPlaceholders());
    const auto found = Placeholders(tree);
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(found[0]->Text(), L"value1");
    EXPECT_EQ(found[1]->Text(), L"value2");
    EXPECT_EQ(found[2]->Text(), L"x");
    EXPECT_EQ(found[2]->Span(), (SourceSpan{38, 41}));
}

TEST(LxlParse, KnownFunctionsAreAcceptedAndOthersRefused) {
    ParseOptions options;
    std::vector<std::wstring> asked;
    options.isFunction = [&asked](const std::wstring& name) {
        asked.push_back(name);
        return name == L"Sin" || name == L"TAMARIN.Cos";
    };
    EXPECT_EQ(Dump(*Parse(L"Sin(TAMARIN.Cos($a))", options)), L"(call Sin (call TAMARIN.Cos $a))");
    EXPECT_EQ(asked, (std::vector<std::wstring>{L"Sin", L"TAMARIN.Cos"}));
    // Keywords and options are not functions and are never asked about.
    asked.clear();
    Parse(L"if(not $a, 1, 2) and true", options);
    EXPECT_TRUE(asked.empty());
}

class KindCounter : public NodeVisitor {
public:
    std::wstring seen;
    void Walk(const Node& node) {
        node.Accept(*this);
        for (const auto& child : node.Children()) Walk(*child);
    }
    void VisitNumber(const Node&) override { seen += L'N'; }
    void VisitString(const Node&) override { seen += L'S'; }
    void VisitBoolean(const Node&) override { seen += L'B'; }
    void VisitPortReference(const Node&) override { seen += L'$'; }
    void VisitPlaceholder(const Node&) override { seen += L'<'; }
    void VisitUnary(const Node&) override { seen += L'u'; }
    void VisitBinary(const Node&) override { seen += L'b'; }
    void VisitConditional(const Node&) override { seen += L'?'; }
    void VisitCall(const Node&) override { seen += L'c'; }
    void VisitOption(const Node&) override { seen += L'o'; }
    void VisitValueList(const Node&) override { seen += L'l'; }
    void VisitLayerSelection(const Node&) override { seen += L'L'; }
    void VisitRange(const Node&) override { seen += L'r'; }
};

TEST(LxlNodeVisitor, VisitsEachKindThroughItsOwnEntry) {
    const auto tree =
        Parse(L"if(true, -f($a(1:2), IGNORE_VALUE {\"x\"}), <p>)", WithPlaceholders());
    KindCounter counter;
    counter.Walk(*tree);
    EXPECT_EQ(counter.seen, L"?BucL$rNNolS<");
}

}  // namespace
