#include "lxl/Options.h"

#include <array>
#include <string_view>
#include <utility>

namespace Velmar::Lattix::Lxl {

namespace {

// The options of the expression editor's option table, grouped as there: ICA component ordering,
// zonal handling of no-data, focal value selection and lookup tables.
constexpr std::array<std::pair<std::wstring_view, OptionOperand>, 16> kOptions{{
    {L"ICASORT_NONE", OptionOperand::None},
    {L"ICASORT_CORRCOEFF", OptionOperand::None},
    {L"ICASORT_SKEWNESS", OptionOperand::None},
    {L"ICASORT_KURTOSIS", OptionOperand::None},
    {L"ICASORT_SKEWxKURT", OptionOperand::None},
    {L"ICASORT_CORRCOEFFxSKEWxKURT", OptionOperand::None},
    {L"ICASORT_ENTROPY", OptionOperand::None},
    {L"ICASORT_NEGENTROPY", OptionOperand::None},
    {L"IGNORE", OptionOperand::None},
    {L"USEALL", OptionOperand::None},
    {L"IGNORE_VALUE", OptionOperand::Values},
    {L"USE_VALUE", OptionOperand::Values},
    {L"NO_APPLY_AT_VALUE", OptionOperand::Values},
    {L"APPLY_AT_VALUE", OptionOperand::Values},
    {L"USE_LOOKUP_TABLE", OptionOperand::Table},
    {L"APPLY_LOOKUP_TABLE", OptionOperand::Table},
}};

}  // namespace

bool IsOptionKeyword(std::wstring_view word) noexcept {
    for (const auto& [keyword, operand] : kOptions) {
        if (keyword == word) return true;
    }
    return false;
}

OptionOperand OperandOf(std::wstring_view keyword) noexcept {
    for (const auto& [name, operand] : kOptions) {
        if (name == keyword) return operand;
    }
    return OptionOperand::None;
}

}  // namespace Velmar::Lattix::Lxl
