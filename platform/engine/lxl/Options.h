#pragma once

#include <string_view>

namespace Velmar::Lattix::Lxl {

// What follows an option keyword in a call's argument list.
enum class OptionOperand {
    None,    // ICASORT_..., IGNORE, USEALL
    Values,  // IGNORE_VALUE, USE_VALUE, NO_APPLY_AT_VALUE, APPLY_AT_VALUE: a value or { v, ... }
    Table,   // USE_LOOKUP_TABLE, APPLY_LOOKUP_TABLE: a value (the table)
};

// Option keywords are written in capitals exactly as listed in docs/lxl.md.
bool IsOptionKeyword(std::wstring_view word) noexcept;
// The operand an option keyword takes; None for words that are not option keywords.
OptionOperand OperandOf(std::wstring_view keyword) noexcept;

}  // namespace Velmar::Lattix::Lxl
