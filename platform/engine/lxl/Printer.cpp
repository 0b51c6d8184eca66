#include <charconv>
#include <cwchar>
#include <string>

#include "Velmar/Lattix/Lxl/Parser.h"
#include "lxl/Lexer.h"

namespace Velmar::Lattix::Lxl {

namespace {

// Binding strength of what a node prints as; higher binds tighter. Conditionals print in their
// call form and therefore bind like a primary.
enum Precedence : int {
    kOr = 1,
    kAnd,
    kComparison,
    kAdditive,
    kMultiplicative,
    kUnary,
    kPower,
    kPostfix,
    kPrimary,
};

int PrecedenceOf(BinaryOperator op) {
    switch (op) {
        case BinaryOperator::Or:
            return kOr;
        case BinaryOperator::And:
            return kAnd;
        case BinaryOperator::Equal:
        case BinaryOperator::NotEqual:
        case BinaryOperator::Less:
        case BinaryOperator::LessEqual:
        case BinaryOperator::Greater:
        case BinaryOperator::GreaterEqual:
            return kComparison;
        case BinaryOperator::Add:
        case BinaryOperator::Subtract:
            return kAdditive;
        case BinaryOperator::Multiply:
        case BinaryOperator::Divide:
        case BinaryOperator::Modulo:
            return kMultiplicative;
        case BinaryOperator::Power:
            return kPower;
    }
    return kPrimary;
}

int PrecedenceOf(const Node& node) {
    switch (node.Kind()) {
        case NodeKind::Binary:
            return PrecedenceOf(node.Binary());
        case NodeKind::Unary:
            return kUnary;
        case NodeKind::LayerSelection:
            return kPostfix;
        default:
            return kPrimary;
    }
}

std::wstring NumberText(const Node& node) {
    if (node.IsInteger()) return std::to_wstring(node.IntegerValue());
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, node.NumberValue());
    std::wstring out(buffer, result.ptr);
    // A decimal must read back as a decimal, so "1" becomes "1.0".
    if (out.find_first_of(L".enai") == std::wstring::npos) out += L".0";
    return out;
}

std::wstring Quoted(const std::wstring& value) {
    std::wstring out = L"\"";
    for (const wchar_t c : value) {
        switch (c) {
            case L'"':
                out += L"\\\"";
                break;
            case L'\\':
                out += L"\\\\";
                break;
            case L'\n':
                out += L"\\n";
                break;
            case L'\r':
                out += L"\\r";
                break;
            case L'\t':
                out += L"\\t";
                break;
            default:
                if (c < 0x20 || c == 0x7f) {
                    wchar_t code[16];
                    std::swprintf(code, 16, L"\\u{%x}", static_cast<unsigned>(c));
                    out += code;
                } else {
                    out += c;
                }
        }
    }
    return out + L"\"";
}

std::wstring PortText(const std::wstring& name) {
    bool plain = !name.empty();
    for (const wchar_t c : name) plain = plain && Lexer::IsNameChar(c);
    return L"$" + (plain ? name : Quoted(name));
}

class TextPrinter {
public:
    std::wstring out;

    void Print(const Node& node) {
        switch (node.Kind()) {
            case NodeKind::Number:
                out += NumberText(node);
                return;
            case NodeKind::String:
                out += Quoted(node.Text());
                return;
            case NodeKind::Boolean:
                out += node.BooleanValue() ? L"true" : L"false";
                return;
            case NodeKind::PortReference:
                out += PortText(node.Text());
                return;
            case NodeKind::Placeholder:
                out += L"<" + node.Text() + L">";
                return;
            case NodeKind::Unary: {
                const Node& operand = *node.Children()[0];
                out += Spelling(node.Unary());
                if (node.Unary() == UnaryOperator::Not) out += L' ';
                Child(operand, PrecedenceOf(operand) < kUnary);
                return;
            }
            case NodeKind::Binary:
                PrintBinary(node);
                return;
            case NodeKind::Conditional:
                List(L"if(", node.Children(), 0, L")");
                return;
            case NodeKind::Call:
                List(node.Text() + L"(", node.Children(), 0, L")");
                return;
            case NodeKind::Option:
                out += node.Text();
                if (!node.Children().empty()) {
                    out += L' ';
                    Print(*node.Children()[0]);
                }
                return;
            case NodeKind::ValueList:
                List(L"{", node.Children(), 0, L"}");
                return;
            case NodeKind::LayerSelection: {
                const Node& value = *node.Children()[0];
                const NodeKind k = value.Kind();
                const bool bare = k == NodeKind::PortReference || k == NodeKind::Placeholder ||
                                  k == NodeKind::Call || k == NodeKind::Conditional ||
                                  k == NodeKind::LayerSelection;
                Child(value, !bare);
                List(L"(", node.Children(), 1, L")");
                return;
            }
            case NodeKind::Range:
                Print(*node.Children()[0]);
                out += L':';
                Print(*node.Children()[1]);
                return;
        }
    }

private:
    void Child(const Node& node, bool parenthesise) {
        if (parenthesise) out += L'(';
        Print(node);
        if (parenthesise) out += L')';
    }

    void List(const std::wstring& open, const std::vector<Node::Ptr>& items, std::size_t from,
              const wchar_t* close) {
        out += open;
        for (std::size_t i = from; i < items.size(); ++i) {
            if (i > from) out += L", ";
            Print(*items[i]);
        }
        out += close;
    }

    void PrintBinary(const Node& node) {
        const int p = PrecedenceOf(node.Binary());
        const auto& operands = node.Children();
        for (std::size_t i = 0; i < operands.size(); ++i) {
            const Node& operand = *operands[i];
            const int q = PrecedenceOf(operand);
            bool parens = false;
            if (p == kPower) {
                // The base is a postfix expression; the exponent may carry signs.
                parens = i == 0 ? q < kPostfix : q < kUnary;
            } else if (p == kComparison) {
                parens = q <= kComparison;
            } else if (i == 0) {
                // A run of the same operator would read back as one flat node.
                parens = q < p ||
                         (operand.Kind() == NodeKind::Binary && operand.Binary() == node.Binary());
            } else {
                parens = q <= p;
            }
            if (i > 0) {
                out += L' ';
                out += Spelling(node.Binary());
                out += L' ';
            }
            Child(operand, parens);
        }
    }
};

class DumpPrinter {
public:
    std::wstring out;

    void Print(const Node& node) {
        switch (node.Kind()) {
            case NodeKind::Number:
                out += NumberText(node);
                return;
            case NodeKind::String:
                out += Quoted(node.Text());
                return;
            case NodeKind::Boolean:
                out += node.BooleanValue() ? L"true" : L"false";
                return;
            case NodeKind::PortReference:
                out += PortText(node.Text());
                return;
            case NodeKind::Placeholder:
                out += L"<" + node.Text() + L">";
                return;
            case NodeKind::Unary:
                Form(std::wstring(Spelling(node.Unary())), node);
                return;
            case NodeKind::Binary:
                Form(std::wstring(Spelling(node.Binary())), node);
                return;
            case NodeKind::Conditional:
                Form(L"if", node);
                return;
            case NodeKind::Call:
                Form(L"call " + node.Text(), node);
                return;
            case NodeKind::Option:
                Form(L"option " + node.Text(), node);
                return;
            case NodeKind::ValueList:
                Form(L"list", node);
                return;
            case NodeKind::LayerSelection:
                Form(L"layers", node);
                return;
            case NodeKind::Range:
                Form(L"range", node);
                return;
        }
    }

private:
    void Form(const std::wstring& head, const Node& node) {
        out += L'(';
        out += head;
        for (const auto& child : node.Children()) {
            out += L' ';
            Print(*child);
        }
        out += L')';
    }
};

}  // namespace

std::wstring ToText(const Node& root) {
    TextPrinter printer;
    printer.Print(root);
    return std::move(printer.out);
}

std::wstring Dump(const Node& root) {
    DumpPrinter printer;
    printer.Print(root);
    return std::move(printer.out);
}

}  // namespace Velmar::Lattix::Lxl
