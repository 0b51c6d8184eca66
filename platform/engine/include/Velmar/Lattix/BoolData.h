#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Velmar/Lattix/Data.h"

namespace Velmar::Lattix {

struct boolDataRecord;

// A yes/no value, "TAMARIN.Bool". Text form "true"/"false"; reading also accepts yes/no, on/off and
// 1/0 in any case.
class BoolData : public Data {
public:
    BoolData();
    explicit BoolData(bool value);

    static ObjectName DefaultTypeName();

    bool GetValue() const;
    void SetValue(bool value);

    ObjectName GetDataTypeName() const override;
    std::wstring ToString() const override;
    void FromString(const std::wstring& text) override;
    JsonValue ToJson() const override;
    void FromJson(const JsonValue& value) override;
    std::shared_ptr<Data> Clone() const override;
    void Initialize() override;
    using Data::Initialize;

private:
    std::shared_ptr<boolDataRecord> boolData;
};

}  // namespace Velmar::Lattix
