#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Velmar::Lattix::Lxl {

enum class TokenKind {
    End,
    Number,
    String,
    PortReference,
    Placeholder,
    Name,
    LeftParen,
    RightParen,
    LeftBrace,
    RightBrace,
    Comma,
    Dot,
    Ellipsis,
    Colon,
    Question,
    Plus,
    Minus,
    Star,
    Slash,
    Percent,
    Caret,
    EqualEqual,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    AndAnd,
    OrOr,
    Bang,
    Assign,
};

// One lexical token. begin/end are 0-based offsets into the expression text, end exclusive.
// text holds a name, a string's or port's decoded value, a placeholder's name or a number as
// written.
struct Token {
    TokenKind kind = TokenKind::End;
    std::size_t begin = 0;
    std::size_t end = 0;
    std::wstring text;
    bool isInteger = false;
    std::int64_t integer = 0;
    double number = 0.0;
};

}  // namespace Velmar::Lattix::Lxl
