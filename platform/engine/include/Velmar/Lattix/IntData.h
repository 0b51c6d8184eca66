#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Velmar/Lattix/Data.h"

namespace Velmar::Lattix {

struct intDataRecord;

// A signed whole number, "TAMARIN.Int" (64 bits). Text form: decimal digits with an optional sign.
class IntData : public Data {
public:
    IntData();
    explicit IntData(std::int64_t value);

    static ObjectName DefaultTypeName();

    std::int64_t GetValue() const;
    void SetValue(std::int64_t value);

    ObjectName GetDataTypeName() const override;
    std::wstring ToString() const override;
    void FromString(const std::wstring& text) override;
    JsonValue ToJson() const override;
    void FromJson(const JsonValue& value) override;
    std::shared_ptr<Data> Clone() const override;
    void Initialize() override;
    using Data::Initialize;

private:
    std::shared_ptr<intDataRecord> intData;
};

}  // namespace Velmar::Lattix
