#include "Velmar/Lattix/Lxl/SyntaxError.h"

#include <utility>

namespace Velmar::Lattix::Lxl {

struct SyntaxErrorData {
    std::size_t position = 0;
    std::size_t line = 1;
    std::size_t column = 1;
    std::wstring expected;
};

SyntaxError::SyntaxError(std::string function, std::string source, const std::wstring& message,
                         std::size_t position, std::size_t line, std::size_t column,
                         std::wstring expected)
    : QuarnLog::Exception(std::move(function), std::move(source), message),
      syntaxErrorData(std::make_shared<const SyntaxErrorData>(
          SyntaxErrorData{position, line, column, std::move(expected)})) {}

std::size_t SyntaxError::Position() const noexcept {
    return syntaxErrorData->position;
}
std::size_t SyntaxError::Line() const noexcept {
    return syntaxErrorData->line;
}
std::size_t SyntaxError::Column() const noexcept {
    return syntaxErrorData->column;
}
const std::wstring& SyntaxError::Expected() const noexcept {
    return syntaxErrorData->expected;
}

}  // namespace Velmar::Lattix::Lxl
