#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "QuarnLog/Exception.h"

namespace Velmar::Lattix::Lxl {

struct SyntaxErrorData;

// An expression text that is not valid LXL. The message names the place and what was expected,
// for example "Syntax error at column 7: expected ')' but found end of expression".
class SyntaxError : public QuarnLog::Exception {
public:
    SyntaxError(std::string function, std::string source, const std::wstring& message,
                std::size_t position, std::size_t line, std::size_t column, std::wstring expected);

    // 0-based character offset into the expression text.
    std::size_t Position() const noexcept;
    // 1-based line and column of Position() (a column counts characters).
    std::size_t Line() const noexcept;
    std::size_t Column() const noexcept;
    // What would have been accepted at Position(), for example "')'" or "a value".
    const std::wstring& Expected() const noexcept;

private:
    std::shared_ptr<const SyntaxErrorData> syntaxErrorData;
};

}  // namespace Velmar::Lattix::Lxl
