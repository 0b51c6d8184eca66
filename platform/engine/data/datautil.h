#pragma once

#include <string>

#include "Velmar/Lattix/JsonValue.h"
#include "Velmar/Lattix/ObjectName.h"

// Shared by the data type sources (not installed).
namespace Velmar::Lattix::detail {

// Raises QuarnLog::Exception: Cannot read "<text>" as <type>: expected <expected>.
[[noreturn]] void RaiseReadError(const char* function, const ObjectName& type,
                                 const std::wstring& text, const std::wstring& expected);
// Raises QuarnLog::Exception: Cannot read JSON <json> as <type>: expected <expected>.
[[noreturn]] void RaiseJsonError(const char* function, const ObjectName& type,
                                 const JsonValue& value, const std::wstring& expected);

std::string ToUtf8(const std::wstring& text);
std::wstring FromUtf8(const std::string& text);

}  // namespace Velmar::Lattix::detail
