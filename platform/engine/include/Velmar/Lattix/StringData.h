#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Velmar/Lattix/Data.h"

namespace Velmar::Lattix {

struct stringDataRecord;

// A text, "TAMARIN.String". Its text form is the text itself; every text is accepted.
class StringData : public Data {
public:
    StringData();
    explicit StringData(const std::wstring& value);

    static ObjectName DefaultTypeName();

    std::wstring GetValue() const;
    void SetValue(const std::wstring& value);

    ObjectName GetDataTypeName() const override;
    std::wstring ToString() const override;
    void FromString(const std::wstring& text) override;
    JsonValue ToJson() const override;
    void FromJson(const JsonValue& value) override;
    std::shared_ptr<Data> Clone() const override;
    void Initialize() override;
    using Data::Initialize;

private:
    std::shared_ptr<stringDataRecord> stringData;
};

}  // namespace Velmar::Lattix
