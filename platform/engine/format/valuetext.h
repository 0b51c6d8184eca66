#pragma once

// Value texts of the model format without a JSON document (not installed).
#include <cstddef>
#include <span>
#include <string_view>

namespace Velmar::Lattix {
class Data;
}

namespace Velmar::Lattix::format {

constexpr std::size_t PlainValueTextCapacity = 32;

// The text data.ToJson().ToText() gives, for a value of exactly DoubleData (finite), IntData,
// UnsignedData or BoolData, written into buffer; empty for any other value. A model holds many
// such values, and each JSON document costs allocations and a serializer.
std::string_view PlainValueText(const Data& data, std::span<char, PlainValueTextCapacity> buffer);

}  // namespace Velmar::Lattix::format
