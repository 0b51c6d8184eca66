#pragma once

#include <cstddef>
#include <string_view>

#include "lxl/Token.h"

namespace Velmar::Lattix::Lxl {

// Splits an expression text into tokens on demand, so that the first error in reading order is
// the one reported. The text must outlive the lexer. Raises SyntaxError on characters and
// literals that cannot begin or complete a token.
class Lexer {
public:
    explicit Lexer(std::wstring_view text) : text(text) {}

    // The next token; after the end of the text, End tokens for ever.
    Token Next();

    static bool IsNameStart(wchar_t c) noexcept;
    static bool IsNameChar(wchar_t c) noexcept;

private:
    void SkipBlanks();
    Token ReadNumber(std::size_t start);
    Token ReadName(std::size_t start);
    Token ReadPortReference(std::size_t start);
    // Reads a quoted text starting at the quote at `start`; `what` names it in messages.
    std::wstring ReadQuoted(std::size_t start, const wchar_t* what);
    wchar_t ReadEscape(std::size_t backslash);

    std::wstring_view text;
    std::size_t pos = 0;
};

}  // namespace Velmar::Lattix::Lxl
