#pragma once

#include <memory>
#include <string>
#include <variant>

namespace qpmg {

// A preference's value: a boolean, a number or a (wide) string.
using Value = std::variant<bool, double, std::wstring>;

// Returned by the callback registrations: dropping the last copy unregisters the callback.
using CallbackToken = std::shared_ptr<void>;

// "boolean", "number" or "string".
const char* TypeName(const Value& value);

}  // namespace qpmg
