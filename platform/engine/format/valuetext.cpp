#include "format/valuetext.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <typeinfo>

#include <nlohmann/json.hpp>

#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/UnsignedData.h"

namespace Velmar::Lattix::format {

namespace {

template <typename Integer>
std::string_view IntegerText(Integer value, std::span<char, PlainValueTextCapacity> buffer) {
    auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return {buffer.data(), static_cast<std::size_t>(end - buffer.data())};
}

}  // namespace

std::string_view PlainValueText(const Data& data, std::span<char, PlainValueTextCapacity> buffer) {
    // Exact types only: a derived type may write its JSON differently.
    const auto& type = typeid(data);
    if (type == typeid(DoubleData)) {
        double value = static_cast<const DoubleData&>(data).GetValue();
        // Infinities and NaN travel as JSON strings.
        if (!std::isfinite(value)) return {};
        // The routine the JSON serializer itself writes doubles with (shortest round trip, ".0"
        // after whole numbers), so that the texts cannot drift apart.
        auto end = nlohmann::detail::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
        return {buffer.data(), static_cast<std::size_t>(end - buffer.data())};
    }
    if (type == typeid(IntData))
        return IntegerText(static_cast<const IntData&>(data).GetValue(), buffer);
    if (type == typeid(UnsignedData))
        return IntegerText(static_cast<const UnsignedData&>(data).GetValue(), buffer);
    if (type == typeid(BoolData)) {
        std::string_view text = static_cast<const BoolData&>(data).GetValue() ? "true" : "false";
        std::memcpy(buffer.data(), text.data(), text.size());
        return {buffer.data(), text.size()};
    }
    return {};
}

}  // namespace Velmar::Lattix::format
