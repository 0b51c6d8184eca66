#include "lxl/Lexer.h"

#include <cerrno>
#include <charconv>
#include <cwctype>
#include <limits>
#include <string>
#include <system_error>

#include "lxl/Diagnostics.h"

namespace Velmar::Lattix::Lxl {

namespace {

bool IsDigit(wchar_t c) noexcept {
    return c >= L'0' && c <= L'9';
}

bool IsBlank(wchar_t c) noexcept {
    return c == L' ' || c == L'\t' || c == L'\n' || c == L'\r' || c == L'\f' || c == L'\v' ||
           c == 0xa0 || (c >= 0x2000 && c <= 0x200a) || c == 0x2028 || c == 0x2029 || c == 0x3000 ||
           c == 0xfeff;
}

int HexValue(wchar_t c) noexcept {
    if (c >= L'0' && c <= L'9') return c - L'0';
    if (c >= L'a' && c <= L'f') return c - L'a' + 10;
    if (c >= L'A' && c <= L'F') return c - L'A' + 10;
    return -1;
}

}  // namespace

bool Lexer::IsNameStart(wchar_t c) noexcept {
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || c == L'_';
}

bool Lexer::IsNameChar(wchar_t c) noexcept {
    return IsNameStart(c) || IsDigit(c);
}

void Lexer::SkipBlanks() {
    while (pos < text.size() && IsBlank(text[pos])) ++pos;
}

Token Lexer::Next() {
    SkipBlanks();
    Token t;
    t.begin = pos;
    if (pos >= text.size()) {
        t.kind = TokenKind::End;
        t.end = pos;
        return t;
    }
    const wchar_t c = text[pos];
    const wchar_t next = pos + 1 < text.size() ? text[pos + 1] : L'\0';
    auto single = [&t, this](TokenKind kind, std::size_t length) {
        t.kind = kind;
        pos += length;
        t.end = pos;
        return t;
    };
    if (IsDigit(c) || (c == L'.' && IsDigit(next))) return ReadNumber(pos);
    if (IsNameStart(c)) return ReadName(pos);
    switch (c) {
        case L'$':
            return ReadPortReference(pos);
        case L'"':
        case L'\'': {
            const std::size_t start = pos;
            t.text = ReadQuoted(start, L"string");
            t.kind = TokenKind::String;
            t.end = pos;
            return t;
        }
        case L'(':
            return single(TokenKind::LeftParen, 1);
        case L')':
            return single(TokenKind::RightParen, 1);
        case L'{':
            return single(TokenKind::LeftBrace, 1);
        case L'}':
            return single(TokenKind::RightBrace, 1);
        case L',':
            return single(TokenKind::Comma, 1);
        case L':':
            return single(TokenKind::Colon, 1);
        case L'?':
            return single(TokenKind::Question, 1);
        case L'+':
            return single(TokenKind::Plus, 1);
        case L'-':
            return single(TokenKind::Minus, 1);
        case L'*':
            return single(TokenKind::Star, 1);
        case L'/':
            return single(TokenKind::Slash, 1);
        case L'%':
            return single(TokenKind::Percent, 1);
        case L'^':
            return single(TokenKind::Caret, 1);
        case L'.':
            if (text.substr(pos, 3) == L"...") return single(TokenKind::Ellipsis, 3);
            return single(TokenKind::Dot, 1);
        case L'=':
            if (next == L'=') return single(TokenKind::EqualEqual, 2);
            return single(TokenKind::Assign, 1);
        case L'!':
            if (next == L'=') return single(TokenKind::NotEqual, 2);
            return single(TokenKind::Bang, 1);
        case L'>':
            if (next == L'=') return single(TokenKind::GreaterEqual, 2);
            return single(TokenKind::Greater, 1);
        case L'<': {
            // "<name>" directly, without blanks, is a placeholder; anything else is a comparison.
            if (IsNameStart(next)) {
                std::size_t end = pos + 2;
                while (end < text.size() && IsNameChar(text[end])) ++end;
                if (end < text.size() && text[end] == L'>') {
                    t.kind = TokenKind::Placeholder;
                    t.text = std::wstring(text.substr(pos + 1, end - pos - 1));
                    pos = end + 1;
                    t.end = pos;
                    return t;
                }
            }
            if (next == L'=') return single(TokenKind::LessEqual, 2);
            return single(TokenKind::Less, 1);
        }
        case L'&':
            if (next == L'&') return single(TokenKind::AndAnd, 2);
            RaiseAt(text, pos,
                    L"Syntax error at " + DescribeLocation(text, pos) +
                        L": unexpected character '&' (write '&&' or 'and')",
                    L"'&&'");
        case L'|':
            if (next == L'|') return single(TokenKind::OrOr, 2);
            RaiseAt(text, pos,
                    L"Syntax error at " + DescribeLocation(text, pos) +
                        L": unexpected character '|' (write '||' or 'or')",
                    L"'||'");
        default:
            break;
    }
    RaiseAt(text, pos,
            L"Syntax error at " + DescribeLocation(text, pos) + L": unexpected character " +
                DescribeCharacter(c),
            L"a value or an operator");
}

Token Lexer::ReadNumber(std::size_t start) {
    std::size_t p = start;
    bool integer = true;
    while (p < text.size() && IsDigit(text[p])) ++p;
    if (p < text.size() && text[p] == L'.' && p + 1 < text.size() && IsDigit(text[p + 1])) {
        integer = false;
        ++p;
        while (p < text.size() && IsDigit(text[p])) ++p;
    }
    if (p < text.size() && (text[p] == L'e' || text[p] == L'E')) {
        std::size_t q = p + 1;
        if (q < text.size() && (text[q] == L'+' || text[q] == L'-')) ++q;
        if (q < text.size() && IsDigit(text[q])) {
            integer = false;
            p = q;
            while (p < text.size() && IsDigit(text[p])) ++p;
        }
    }
    Token t;
    t.kind = TokenKind::Number;
    t.begin = start;
    t.end = p;
    t.text = std::wstring(text.substr(start, p - start));
    pos = p;
    // Digits and the few signs of a number are ASCII, so narrowing them is exact.
    std::string narrow(t.text.begin(), t.text.end());
    const char* first = narrow.data();
    const char* last = narrow.data() + narrow.size();
    if (integer) {
        std::int64_t value = 0;
        const auto result = std::from_chars(first, last, value);
        if (result.ec == std::errc::result_out_of_range || result.ptr != last) {
            RaiseAt(text, start,
                    L"Syntax error at " + DescribeLocation(text, start) + L": the integer " +
                        t.text + L" is too large (the largest is " +
                        std::to_wstring(std::numeric_limits<std::int64_t>::max()) +
                        L"; write a decimal such as " + t.text + L".0 for larger values)",
                    L"an integer of at most 19 digits");
        }
        t.isInteger = true;
        t.integer = value;
        t.number = static_cast<double>(value);
    } else {
        double value = 0.0;
        const auto result = std::from_chars(first, last, value);
        if (result.ec == std::errc::result_out_of_range || result.ptr != last) {
            RaiseAt(text, start,
                    L"Syntax error at " + DescribeLocation(text, start) + L": the number " +
                        t.text + L" is out of range",
                    L"a number between about 1e-308 and 1e308");
        }
        t.number = value;
    }
    return t;
}

Token Lexer::ReadName(std::size_t start) {
    std::size_t p = start;
    while (p < text.size() && IsNameChar(text[p])) ++p;
    Token t;
    t.kind = TokenKind::Name;
    t.begin = start;
    t.end = p;
    t.text = std::wstring(text.substr(start, p - start));
    pos = p;
    return t;
}

Token Lexer::ReadPortReference(std::size_t start) {
    Token t;
    t.kind = TokenKind::PortReference;
    t.begin = start;
    const std::size_t p = start + 1;
    if (p < text.size() && (text[p] == L'"' || text[p] == L'\'')) {
        t.text = ReadQuoted(p, L"port name");
        if (t.text.empty()) {
            RaiseAt(text, p,
                    L"Syntax error at " + DescribeLocation(text, p) +
                        L": a port name must not be empty",
                    L"a port name");
        }
        t.end = pos;
        return t;
    }
    std::size_t end = p;
    while (end < text.size() && IsNameChar(text[end])) ++end;
    if (end == p) {
        const std::wstring found =
            p < text.size() ? DescribeCharacter(text[p]) : std::wstring(L"end of expression");
        RaiseExpected(text, p, L"a port name after '$'", found,
                      L"port names are letters, digits and '_'; quote others as $\"my port\"");
    }
    t.text = std::wstring(text.substr(p, end - p));
    pos = end;
    t.end = end;
    return t;
}

std::wstring Lexer::ReadQuoted(std::size_t start, const wchar_t* what) {
    const wchar_t quote = text[start];
    std::wstring value;
    std::size_t p = start + 1;
    for (;;) {
        if (p >= text.size() || text[p] == L'\n' || text[p] == L'\r') {
            const std::wstring found = p >= text.size() ? std::wstring(L"end of expression")
                                                        : std::wstring(L"end of line");
            // The closing quote is shown in the other kind of quotes: "'" or '"'.
            const std::wstring closing = quote == L'\'' ? L"\"'\"" : L"'\"'";
            RaiseExpected(text, p, closing, found,
                          std::wstring(L"the ") + what + L" begun at " +
                              DescribeLocation(text, start) + L" is not closed");
        }
        const wchar_t c = text[p];
        if (c == quote) {
            pos = p + 1;
            return value;
        }
        if (c == L'\\') {
            pos = p;
            value += ReadEscape(p);
            p = pos;
            continue;
        }
        value += c;
        ++p;
    }
}

wchar_t Lexer::ReadEscape(std::size_t backslash) {
    const std::size_t p = backslash + 1;
    const wchar_t c = p < text.size() ? text[p] : L'\0';
    pos = p + 1;
    switch (c) {
        case L'\\':
            return L'\\';
        case L'"':
            return L'"';
        case L'\'':
            return L'\'';
        case L'n':
            return L'\n';
        case L't':
            return L'\t';
        case L'r':
            return L'\r';
        case L'u': {
            std::size_t q = p + 1;
            if (q < text.size() && text[q] == L'{') {
                ++q;
                std::uint32_t code = 0;
                std::size_t digits = 0;
                while (q < text.size() && HexValue(text[q]) >= 0 && digits < 6) {
                    code = code * 16 + static_cast<std::uint32_t>(HexValue(text[q]));
                    ++q;
                    ++digits;
                }
                const bool valid = digits > 0 && q < text.size() && text[q] == L'}' &&
                                   code <= 0x10ffff && (code < 0xd800 || code > 0xdfff) &&
                                   code != 0;
                if (valid) {
                    pos = q + 1;
                    return static_cast<wchar_t>(code);
                }
            }
            RaiseAt(text, backslash,
                    L"Syntax error at " + DescribeLocation(text, backslash) +
                        L": expected a character code such as \\u{e9} (1 to 6 hexadecimal digits, "
                        L"at most 10FFFF, not a surrogate or 0) after '\\u'",
                    L"\\u{hex}");
        }
        default:
            break;
    }
    const std::wstring shown =
        c == L'\0' && p >= text.size() ? std::wstring(L"end of expression") : DescribeCharacter(c);
    RaiseAt(
        text, backslash,
        L"Syntax error at " + DescribeLocation(text, backslash) +
            L": unknown escape '\\' followed by " + shown +
            L" (the escapes are \\\\ \\\" \\' \\n \\r \\t \\u{hex}; write \\\\ for a backslash)",
        L"an escape: \\\\ \\\" \\' \\n \\r \\t or \\u{hex}");
}

}  // namespace Velmar::Lattix::Lxl
