#include "lxl/Diagnostics.h"

#include <cwchar>

namespace Velmar::Lattix::Lxl {

namespace {

// The public entry point is named in every error, whichever helper detected it.
constexpr const char* kParseFunction = "Velmar::Lattix::Lxl::Parse";

struct LineColumn {
    std::size_t line = 1;
    std::size_t column = 1;
};

LineColumn Locate(std::wstring_view text, std::size_t position) {
    LineColumn lc;
    const std::size_t stop = position < text.size() ? position : text.size();
    for (std::size_t i = 0; i < stop; ++i) {
        if (text[i] == L'\n') {
            ++lc.line;
            lc.column = 1;
        } else {
            ++lc.column;
        }
    }
    return lc;
}

}  // namespace

std::wstring DescribeLocation(std::wstring_view text, std::size_t position) {
    const LineColumn lc = Locate(text, position);
    std::wstring out;
    if (text.find(L'\n') != std::wstring_view::npos) {
        out += L"line " + std::to_wstring(lc.line) + L", ";
    }
    out += L"column " + std::to_wstring(lc.column);
    return out;
}

std::wstring DescribeCharacter(wchar_t c) {
    if (c < 0x20 || c == 0x7f || (c >= 0x80 && c < 0xa0)) {
        wchar_t buffer[16];
        std::swprintf(buffer, 16, L"U+%04X", static_cast<unsigned>(c));
        return buffer;
    }
    return std::wstring(L"'") + c + L"'";
}

std::wstring DescribeToken(const Token& token) {
    switch (token.kind) {
        case TokenKind::End:
            return L"end of expression";
        case TokenKind::Number:
            return L"the number " + token.text;
        case TokenKind::String:
            return L"a string";
        case TokenKind::PortReference:
            return L"the port reference $" + token.text;
        case TokenKind::Placeholder:
            return L"the placeholder <" + token.text + L">";
        case TokenKind::Name:
            return L"the name '" + token.text + L"'";
        case TokenKind::LeftParen:
            return L"'('";
        case TokenKind::RightParen:
            return L"')'";
        case TokenKind::LeftBrace:
            return L"'{'";
        case TokenKind::RightBrace:
            return L"'}'";
        case TokenKind::Comma:
            return L"','";
        case TokenKind::Dot:
            return L"'.'";
        case TokenKind::Ellipsis:
            return L"'...'";
        case TokenKind::Colon:
            return L"':'";
        case TokenKind::Question:
            return L"'?'";
        case TokenKind::Plus:
            return L"'+'";
        case TokenKind::Minus:
            return L"'-'";
        case TokenKind::Star:
            return L"'*'";
        case TokenKind::Slash:
            return L"'/'";
        case TokenKind::Percent:
            return L"'%'";
        case TokenKind::Caret:
            return L"'^'";
        case TokenKind::EqualEqual:
            return L"'=='";
        case TokenKind::NotEqual:
            return L"'!='";
        case TokenKind::Less:
            return L"'<'";
        case TokenKind::LessEqual:
            return L"'<='";
        case TokenKind::Greater:
            return L"'>'";
        case TokenKind::GreaterEqual:
            return L"'>='";
        case TokenKind::AndAnd:
            return L"'&&'";
        case TokenKind::OrOr:
            return L"'||'";
        case TokenKind::Bang:
            return L"'!'";
        case TokenKind::Assign:
            return L"'='";
    }
    return L"?";
}

void RaiseExpected(std::wstring_view text, std::size_t position, const std::wstring& expected,
                   const std::wstring& found, const std::wstring& hint) {
    std::wstring message = L"Syntax error at " + DescribeLocation(text, position) + L": expected " +
                           expected + L" but found " + found;
    if (!hint.empty()) message += L" (" + hint + L")";
    RaiseAt(text, position, message, expected);
}

void RaiseAt(std::wstring_view text, std::size_t position, const std::wstring& message,
             const std::wstring& expected) {
    const LineColumn lc = Locate(text, position);
    throw SyntaxError(kParseFunction, __FILE__, message, position, lc.line, lc.column, expected);
}

}  // namespace Velmar::Lattix::Lxl
