#pragma once

#include <memory>
#include <string>

#include "Velmar/Lattix/Data.h"

namespace Velmar::Lattix {

struct genericDataRecord;

// A value of the generic type "TAMARIN.Data": any JSON document. Its text form is the compact
// JSON text; reading accepts any JSON text, and a text that is not JSON is kept as a JSON string.
class GenericData : public Data {
public:
    GenericData();
    explicit GenericData(JsonValue value);

    static ObjectName DefaultTypeName();

    JsonValue GetValue() const;
    void SetValue(JsonValue value);

    ObjectName GetDataTypeName() const override;
    std::wstring ToString() const override;
    void FromString(const std::wstring& text) override;
    JsonValue ToJson() const override;
    void FromJson(const JsonValue& value) override;
    std::shared_ptr<Data> Clone() const override;
    void Initialize() override;
    using Data::Initialize;
    bool IsPlainValue() const override { return false; }

private:
    std::shared_ptr<genericDataRecord> genericData;
};

}  // namespace Velmar::Lattix
