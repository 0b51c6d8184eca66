#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Velmar/Lattix/Lxl/SyntaxError.h"
#include "lxl/Token.h"

namespace Velmar::Lattix::Lxl {

// "column 7", or "line 2, column 3" when the text has more than one line.
std::wstring DescribeLocation(std::wstring_view text, std::size_t position);

// How a token is named in messages: "end of expression", "'+'", "the name 'foo'", ...
std::wstring DescribeToken(const Token& token);

// A character quoted for a message: "'@'", or "U+0007" for one that cannot be shown.
std::wstring DescribeCharacter(wchar_t c);

// Raises SyntaxError with "Syntax error at <location>: expected <expected> but found <found>"
// followed by hint (if any).
[[noreturn]] void RaiseExpected(std::wstring_view text, std::size_t position,
                                const std::wstring& expected, const std::wstring& found,
                                const std::wstring& hint = {});

// Raises SyntaxError with the given message; the message names the location itself.
[[noreturn]] void RaiseAt(std::wstring_view text, std::size_t position, const std::wstring& message,
                          const std::wstring& expected);

}  // namespace Velmar::Lattix::Lxl
