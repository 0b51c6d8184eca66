#pragma once

#include <string>
#include <string_view>
#include <vector>

// Small text helpers shared by the engine's sources (not installed).
namespace Velmar::Lattix::detail {

std::wstring Trim(std::wstring_view text);
std::wstring Lower(std::wstring_view text);
bool EqualsNoCase(std::wstring_view a, std::wstring_view b);
std::wstring Join(const std::vector<std::wstring>& items, std::wstring_view separator);
// Splits at every separator character; pieces are trimmed, empty pieces dropped.
std::vector<std::wstring> SplitTrimmed(std::wstring_view text, wchar_t separator);
// Quotes text for messages: "text", shortened to 80 characters.
std::wstring Quote(std::wstring_view text);

// Strict readers of a whole (trimmed) text; false when the text is not exactly one such number.
bool ReadInt64(std::wstring_view text, long long& value);
bool ReadUInt64(std::wstring_view text, unsigned long long& value);
bool ReadDouble(std::wstring_view text, double& value);
bool ReadBool(std::wstring_view text, bool& value);
// The shortest decimal text that reads back to the same double.
std::wstring DoubleToText(double value);

}  // namespace Velmar::Lattix::detail
