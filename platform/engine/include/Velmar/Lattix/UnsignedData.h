#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Velmar/Lattix/Data.h"

namespace Velmar::Lattix {

struct unsignedDataRecord;

// A whole number of zero or more, "TAMARIN.Unsigned" (64 bits). Text form: decimal digits.
class UnsignedData : public Data {
public:
    UnsignedData();
    explicit UnsignedData(std::uint64_t value);

    static ObjectName DefaultTypeName();

    std::uint64_t GetValue() const;
    void SetValue(std::uint64_t value);

    ObjectName GetDataTypeName() const override;
    std::wstring ToString() const override;
    void FromString(const std::wstring& text) override;
    JsonValue ToJson() const override;
    void FromJson(const JsonValue& value) override;
    std::shared_ptr<Data> Clone() const override;
    void Initialize() override;
    using Data::Initialize;

private:
    std::shared_ptr<unsignedDataRecord> unsignedData;
};

}  // namespace Velmar::Lattix
