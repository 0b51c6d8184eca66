#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Velmar/Lattix/Data.h"

namespace Velmar::Lattix {

struct doubleDataRecord;

// A floating-point number, "TAMARIN.Double". Text form: the shortest decimal that reads back to the
// same value; "inf", "-inf" and "nan" are accepted.
class DoubleData : public Data {
public:
    DoubleData();
    explicit DoubleData(double value);

    static ObjectName DefaultTypeName();

    double GetValue() const;
    void SetValue(double value);

    ObjectName GetDataTypeName() const override;
    std::wstring ToString() const override;
    void FromString(const std::wstring& text) override;
    JsonValue ToJson() const override;
    void FromJson(const JsonValue& value) override;
    std::shared_ptr<Data> Clone() const override;
    void Initialize() override;
    using Data::Initialize;

private:
    std::shared_ptr<doubleDataRecord> doubleData;
};

}  // namespace Velmar::Lattix
