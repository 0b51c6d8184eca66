#include "Velmar/Lattix/Lxl/Parser.h"

#include <array>
#include <optional>
#include <unordered_set>
#include <utility>

#include "lxl/Diagnostics.h"
#include "lxl/Lexer.h"
#include "lxl/Options.h"

namespace Velmar::Lattix::Lxl {

namespace {

// Nesting of parentheses, calls and prefix operators. Each level costs about ten stack frames,
// so this keeps hostile input far from the end of the stack.
constexpr std::size_t kMaxNesting = 256;
// Height of the tree; chains of one operator stay flat, so only alternating chains and real
// nesting count. Walks over the tree recurse this deep at most.
constexpr std::size_t kMaxHeight = 1000;

bool EqualsIgnoringCase(std::wstring_view a, std::wstring_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        wchar_t x = a[i];
        wchar_t y = b[i];
        if (x >= L'A' && x <= L'Z') x = static_cast<wchar_t>(x - L'A' + L'a');
        if (y >= L'A' && y <= L'Z') y = static_cast<wchar_t>(y - L'A' + L'a');
        if (x != y) return false;
    }
    return true;
}

bool IsKeyword(const Token& t, std::wstring_view word) {
    return t.kind == TokenKind::Name && EqualsIgnoringCase(t.text, word);
}

class Parser {
public:
    Parser(std::wstring_view text, const ParseOptions& options)
        : text(text), options(options), lexer(text) {}

    // The placeholders met so far, in text order.
    std::vector<Node::Ptr> placeholders;

    Node::Ptr ParseAll() {
        Node::Ptr root = ParseExpression();
        if (Peek().kind != TokenKind::End) {
            RaiseExpected(text, Peek().begin, L"an operator or end of expression",
                          DescribeToken(Peek()), HintFor(Peek()));
        }
        return root;
    }

private:
    // Lookahead ------------------------------------------------------------------------------

    const Token& Peek(std::size_t ahead = 0) {
        while (buffered <= ahead) {
            lookahead[(head + buffered) % lookahead.size()] = lexer.Next();
            ++buffered;
        }
        return lookahead[(head + ahead) % lookahead.size()];
    }

    Token Take() {
        Peek();
        Token t = std::move(lookahead[head]);
        head = (head + 1) % lookahead.size();
        --buffered;
        lastEnd = t.end;
        return t;
    }

    bool Accept(TokenKind kind) {
        if (Peek().kind != kind) return false;
        Take();
        return true;
    }

    Token Expect(TokenKind kind, const std::wstring& expected, const std::wstring& hint = {}) {
        if (Peek().kind != kind) {
            RaiseExpected(text, Peek().begin, expected, DescribeToken(Peek()),
                          hint.empty() ? HintFor(Peek()) : hint);
        }
        return Take();
    }

    static std::wstring HintFor(const Token& t) {
        switch (t.kind) {
            case TokenKind::Assign:
                return L"write '==' to compare";
            case TokenKind::Ellipsis:
                return L"list further values or remove the '...'";
            case TokenKind::Name:
                if (IsOptionKeyword(t.text)) return L"options are arguments of operator calls";
                return {};
            default:
                return {};
        }
    }

    Node::Ptr Checked(Node::Ptr node, std::size_t position) {
        if (node->Height() > kMaxHeight) {
            RaiseAt(text, position,
                    L"Syntax error at " + DescribeLocation(text, position) +
                        L": the expression is nested too deeply (more than " +
                        std::to_wstring(kMaxHeight) +
                        L" levels); group long runs of alternating operators in parentheses",
                    L"a less deeply nested expression");
        }
        return node;
    }

    SourceSpan SpanFrom(std::size_t begin) const { return SourceSpan{begin, lastEnd}; }

    // Guards every cycle of the grammar: each passes through ParseUnary or a conditional's
    // branches.
    class NestingGuard {
    public:
        NestingGuard(Parser& parser, std::size_t position) : parser(parser) {
            if (parser.nesting >= kMaxNesting) {
                RaiseAt(parser.text, position,
                        L"Syntax error at " + DescribeLocation(parser.text, position) +
                            L": the expression is nested too deeply (more than " +
                            std::to_wstring(kMaxNesting) +
                            L" levels of parentheses, calls or signs)",
                        L"a less deeply nested expression");
            }
            ++parser.nesting;
        }
        ~NestingGuard() { --parser.nesting; }
        NestingGuard(const NestingGuard&) = delete;
        NestingGuard& operator=(const NestingGuard&) = delete;

    private:
        Parser& parser;
    };

    // Grammar --------------------------------------------------------------------------------

    Node::Ptr ParseExpression() { return ParseConditional(); }

    Node::Ptr ParseConditional() {
        const std::size_t begin = Peek().begin;
        Node::Ptr condition = ParseOr();
        if (Peek().kind != TokenKind::Question) return condition;
        // Both branches recurse here directly, outside the guard of ParseUnary.
        NestingGuard guard(*this, Take().begin);
        Node::Ptr whenTrue = ParseConditional();
        Expect(TokenKind::Colon, L"':'",
               L"a conditional is written condition ? value : other value");
        Node::Ptr whenFalse = ParseConditional();
        return Checked(Node::MakeConditional(std::move(condition), std::move(whenTrue),
                                             std::move(whenFalse), SpanFrom(begin)),
                       begin);
    }

    // One left-associative level: a run of the same operator becomes one n-ary node.
    template <typename Next, typename Match>
    Node::Ptr ParseLeftChain(Next next, Match match) {
        const std::size_t begin = Peek().begin;
        Node::Ptr left = (this->*next)();
        std::optional<BinaryOperator> op = match(Peek());
        if (!op) return left;
        std::vector<Node::Ptr> operands{std::move(left)};
        BinaryOperator chainOp = *op;
        while (op) {
            const std::size_t chainEnd = lastEnd;
            const std::size_t opPosition = Take().begin;
            Node::Ptr right = (this->*next)();
            if (*op != chainOp) {
                Node::Ptr folded = Checked(
                    Node::MakeBinary(chainOp, std::move(operands), SourceSpan{begin, chainEnd}),
                    opPosition);
                operands.clear();
                operands.push_back(std::move(folded));
                chainOp = *op;
            }
            operands.push_back(std::move(right));
            op = match(Peek());
        }
        return Checked(Node::MakeBinary(chainOp, std::move(operands), SpanFrom(begin)), begin);
    }

    Node::Ptr ParseOr() {
        return ParseLeftChain(&Parser::ParseAnd,
                              [](const Token& t) -> std::optional<BinaryOperator> {
                                  if (t.kind == TokenKind::OrOr || IsKeyword(t, L"or"))
                                      return BinaryOperator::Or;
                                  return std::nullopt;
                              });
    }

    Node::Ptr ParseAnd() {
        return ParseLeftChain(&Parser::ParseComparison,
                              [](const Token& t) -> std::optional<BinaryOperator> {
                                  if (t.kind == TokenKind::AndAnd || IsKeyword(t, L"and"))
                                      return BinaryOperator::And;
                                  return std::nullopt;
                              });
    }

    static std::optional<BinaryOperator> ComparisonOf(const Token& t) {
        switch (t.kind) {
            case TokenKind::EqualEqual:
                return BinaryOperator::Equal;
            case TokenKind::NotEqual:
                return BinaryOperator::NotEqual;
            case TokenKind::Less:
                return BinaryOperator::Less;
            case TokenKind::LessEqual:
                return BinaryOperator::LessEqual;
            case TokenKind::Greater:
                return BinaryOperator::Greater;
            case TokenKind::GreaterEqual:
                return BinaryOperator::GreaterEqual;
            default:
                return std::nullopt;
        }
    }

    Node::Ptr ParseComparison() {
        const std::size_t begin = Peek().begin;
        Node::Ptr left = ParseAdditive();
        const std::optional<BinaryOperator> op = ComparisonOf(Peek());
        if (!op) return left;
        Take();
        Node::Ptr right = ParseAdditive();
        if (ComparisonOf(Peek())) {
            const std::size_t at = Peek().begin;
            RaiseAt(text, at,
                    L"Syntax error at " + DescribeLocation(text, at) +
                        L": comparisons cannot be chained; join them with 'and', as in $a < $b and "
                        L"$b < $c",
                    L"'and', 'or' or the end of the comparison");
        }
        std::vector<Node::Ptr> operands{std::move(left), std::move(right)};
        return Checked(Node::MakeBinary(*op, std::move(operands), SpanFrom(begin)), begin);
    }

    Node::Ptr ParseAdditive() {
        return ParseLeftChain(&Parser::ParseMultiplicative,
                              [](const Token& t) -> std::optional<BinaryOperator> {
                                  if (t.kind == TokenKind::Plus) return BinaryOperator::Add;
                                  if (t.kind == TokenKind::Minus) return BinaryOperator::Subtract;
                                  return std::nullopt;
                              });
    }

    Node::Ptr ParseMultiplicative() {
        return ParseLeftChain(&Parser::ParseUnary,
                              [](const Token& t) -> std::optional<BinaryOperator> {
                                  if (t.kind == TokenKind::Star) return BinaryOperator::Multiply;
                                  if (t.kind == TokenKind::Slash) return BinaryOperator::Divide;
                                  if (t.kind == TokenKind::Percent) return BinaryOperator::Modulo;
                                  return std::nullopt;
                              });
    }

    Node::Ptr ParseUnary() {
        const Token& t = Peek();
        const std::size_t begin = t.begin;
        NestingGuard guard(*this, begin);
        std::optional<UnaryOperator> op;
        if (t.kind == TokenKind::Minus) op = UnaryOperator::Negate;
        if (t.kind == TokenKind::Bang || IsKeyword(t, L"not")) op = UnaryOperator::Not;
        if (!op) return ParsePower();
        Take();
        Node::Ptr operand = ParseUnary();
        return Checked(Node::MakeUnary(*op, std::move(operand), SpanFrom(begin)), begin);
    }

    Node::Ptr ParsePower() {
        const std::size_t begin = Peek().begin;
        Node::Ptr base = ParsePostfix();
        if (Peek().kind != TokenKind::Caret) return base;
        Take();
        Node::Ptr exponent = ParseUnary();
        std::vector<Node::Ptr> operands{std::move(base), std::move(exponent)};
        return Checked(
            Node::MakeBinary(BinaryOperator::Power, std::move(operands), SpanFrom(begin)), begin);
    }

    Node::Ptr ParsePostfix() {
        const std::size_t begin = Peek().begin;
        const TokenKind first = Peek().kind;
        Node::Ptr node = ParsePrimary();
        const bool literal = first == TokenKind::Number || first == TokenKind::String ||
                             node->Kind() == NodeKind::Boolean;
        if (literal) return node;
        while (Peek().kind == TokenKind::LeftParen) {
            Take();
            std::vector<Node::Ptr> items;
            do {
                items.push_back(ParseLayerItem());
            } while (Accept(TokenKind::Comma));
            Expect(TokenKind::RightParen, L"',' or ')' after a layer", {});
            node = Checked(
                Node::MakeLayerSelection(std::move(node), std::move(items), SpanFrom(begin)),
                begin);
        }
        return node;
    }

    Node::Ptr ParseLayerItem() {
        const std::size_t begin = Peek().begin;
        if (Peek().kind == TokenKind::RightParen) {
            RaiseExpected(text, begin, L"a layer number or range", DescribeToken(Peek()));
        }
        Node::Ptr first = ParseExpression();
        if (!Accept(TokenKind::Colon)) return first;
        Node::Ptr last = ParseExpression();
        return Checked(Node::MakeRange(std::move(first), std::move(last), SpanFrom(begin)), begin);
    }

    Node::Ptr ParsePrimary() {
        const Token& t = Peek();
        const std::size_t begin = t.begin;
        switch (t.kind) {
            case TokenKind::Number: {
                const Token n = Take();
                if (n.isInteger) return Node::MakeInteger(n.integer, SpanFrom(begin));
                return Node::MakeDecimal(n.number, SpanFrom(begin));
            }
            case TokenKind::String: {
                Token s = Take();
                return Node::MakeString(std::move(s.text), SpanFrom(begin));
            }
            case TokenKind::PortReference: {
                Token p = Take();
                return Node::MakePortReference(std::move(p.text), SpanFrom(begin));
            }
            case TokenKind::Placeholder: {
                Token p = Take();
                placeholders.push_back(Node::MakePlaceholder(std::move(p.text), SpanFrom(begin)));
                return placeholders.back();
            }
            case TokenKind::LeftParen: {
                Take();
                Node::Ptr inner = ParseExpression();
                Expect(TokenKind::RightParen, L"')'");
                return inner;
            }
            case TokenKind::Name:
                return ParseName();
            default:
                break;
        }
        RaiseExpected(text, begin, L"a value", DescribeToken(t), HintFor(t));
    }

    Node::Ptr ParseName() {
        const Token& t = Peek();
        const std::size_t begin = t.begin;
        if (IsKeyword(t, L"true") || IsKeyword(t, L"false")) {
            const bool value = IsKeyword(t, L"true");
            Take();
            return Node::MakeBoolean(value, SpanFrom(begin));
        }
        if (IsKeyword(t, L"if") && Peek(1).kind == TokenKind::LeftParen) return ParseIf();
        if (IsKeyword(t, L"and") || IsKeyword(t, L"or") || IsKeyword(t, L"if")) {
            RaiseExpected(text, begin, L"a value", DescribeToken(t));
        }
        if (IsOptionKeyword(t.text)) {
            RaiseAt(text, begin,
                    L"Syntax error at " + DescribeLocation(text, begin) + L": the option " +
                        t.text + L" can only be an argument of an operator call",
                    L"a value");
        }
        std::wstring name = t.text;
        if (Peek(1).kind == TokenKind::Dot) {
            if (Peek(2).kind != TokenKind::Name) {
                Take();
                Take();
                RaiseExpected(text, Peek().begin, L"an operator name after '" + name + L".'",
                              DescribeToken(Peek()));
            }
            Take();
            Take();
            name += L"." + Take().text;
            if (Peek().kind == TokenKind::Dot) {
                RaiseExpected(text, Peek().begin, L"'(' after the operator name " + name,
                              DescribeToken(Peek()),
                              L"a qualified name has one '.', as in Namespace.Name");
            }
        } else {
            Take();
        }
        if (Peek().kind != TokenKind::LeftParen) {
            RaiseExpected(text, begin, L"a value", L"the name '" + name + L"'",
                          L"write $" + name + L" for a port or " + name + L"(...) for an operator");
        }
        if (options.isFunction && !options.isFunction(name)) {
            RaiseAt(text, begin,
                    L"Unknown function '" + name + L"' at " + DescribeLocation(text, begin),
                    L"the name of an operator usable in expressions");
        }
        Take();
        std::vector<Node::Ptr> arguments;
        if (!Accept(TokenKind::RightParen)) {
            do {
                arguments.push_back(ParseArgument());
            } while (Accept(TokenKind::Comma));
            Expect(TokenKind::RightParen, L"',' or ')'");
        }
        return Checked(Node::MakeCall(std::move(name), std::move(arguments), SpanFrom(begin)),
                       begin);
    }

    Node::Ptr ParseIf() {
        const std::size_t begin = Take().begin;
        Take();
        Node::Ptr condition = ParseExpression();
        Expect(TokenKind::Comma, L"','",
               L"if takes a condition, a value when true and a value when false");
        Node::Ptr whenTrue = ParseExpression();
        Expect(TokenKind::Comma, L"','",
               L"if takes a condition, a value when true and a value when false");
        Node::Ptr whenFalse = ParseExpression();
        Expect(TokenKind::RightParen, L"')'", L"if takes exactly three arguments");
        return Checked(Node::MakeConditional(std::move(condition), std::move(whenTrue),
                                             std::move(whenFalse), SpanFrom(begin)),
                       begin);
    }

    Node::Ptr ParseArgument() {
        const Token& t = Peek();
        if (t.kind != TokenKind::Name || !IsOptionKeyword(t.text)) return ParseExpression();
        const std::size_t begin = t.begin;
        const OptionOperand operand = OperandOf(t.text);
        std::wstring keyword = Take().text;
        switch (operand) {
            case OptionOperand::None:
                return Node::MakeOption(std::move(keyword), nullptr, SpanFrom(begin));
            case OptionOperand::Table:
            case OptionOperand::Values:
                break;
        }
        Node::Ptr value;
        if (operand == OptionOperand::Values && Peek().kind == TokenKind::LeftBrace) {
            const std::size_t listBegin = Take().begin;
            std::vector<Node::Ptr> values;
            do {
                values.push_back(ParseExpression());
            } while (Accept(TokenKind::Comma));
            Expect(TokenKind::RightBrace, L"',' or '}'");
            value = Checked(Node::MakeValueList(std::move(values), SpanFrom(listBegin)), listBegin);
        } else {
            value = ParseExpression();
        }
        return Checked(Node::MakeOption(std::move(keyword), std::move(value), SpanFrom(begin)),
                       begin);
    }

    std::wstring_view text;
    const ParseOptions& options;
    Lexer lexer;
    // At most three tokens are looked at ahead (a qualified call name); a ring keeps them.
    std::array<Token, 4> lookahead;
    std::size_t head = 0;
    std::size_t buffered = 0;
    std::size_t lastEnd = 0;
    std::size_t nesting = 0;
};

void CollectPlaceholders(const Node::Ptr& node, std::vector<Node::Ptr>& out) {
    if (node->Kind() == NodeKind::Placeholder) out.push_back(node);
    for (const auto& child : node->Children()) CollectPlaceholders(child, out);
}

void CollectPorts(const Node& node, std::unordered_set<std::wstring>& seen,
                  std::vector<std::wstring>& out) {
    if (node.Kind() == NodeKind::PortReference && seen.insert(node.Text()).second) {
        out.push_back(node.Text());
    }
    for (const auto& child : node.Children()) CollectPorts(*child, seen, out);
}

}  // namespace

std::shared_ptr<const Node> Parse(std::wstring_view text, const ParseOptions& options) {
    Parser parser(text, options);
    if (text.find_first_not_of(L" \t\r\n") == std::wstring_view::npos) {
        RaiseExpected(text, text.size(), L"an expression", L"an empty text");
    }
    Node::Ptr root = parser.ParseAll();
    if (!options.allowPlaceholders) {
        const std::vector<Node::Ptr>& left = parser.placeholders;
        if (!left.empty()) {
            const std::size_t position = left.front()->Span().begin;
            std::wstring message;
            if (left.size() == 1) {
                message = L"Replace the placeholder <" + left.front()->Text() + L"> at " +
                          DescribeLocation(text, position) +
                          L" with a port reference, a value or an expression";
            } else {
                message = L"Replace the placeholders ";
                for (std::size_t i = 0; i < left.size(); ++i) {
                    if (i > 0) message += L", ";
                    message += L"<" + left[i]->Text() + L"> (" +
                               DescribeLocation(text, left[i]->Span().begin) + L")";
                }
                message += L" with port references, values or expressions";
            }
            RaiseAt(text, position, message, L"a port reference, a value or an expression");
        }
    }
    return root;
}

std::vector<std::wstring> ReferencedPorts(const Node& root) {
    std::vector<std::wstring> out;
    std::unordered_set<std::wstring> seen;
    CollectPorts(root, seen, out);
    return out;
}

std::vector<std::shared_ptr<const Node>> Placeholders(const std::shared_ptr<const Node>& root) {
    std::vector<Node::Ptr> out;
    if (root) CollectPlaceholders(root, out);
    return out;
}

}  // namespace Velmar::Lattix::Lxl
