#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/EnumDataInterface.h"

namespace Velmar::Lattix {

struct enumDataRecord;

// An enumeration: one of a fixed list of names, under a type name of its own (for example
// "TAMARIN.FocalStatistic"). The first name is the initial value. Text and JSON form: the name.
class EnumData : public Data, public EnumDataInterface {
public:
    // names must not be empty.
    EnumData(ObjectName typeName, std::vector<std::wstring> names);

    std::vector<std::wstring> GetValueNames() const override;
    std::wstring GetSelectedName() const override;
    bool SelectByName(const std::wstring& name) override;
    std::size_t GetSelectedIndex() const;

    ObjectName GetDataTypeName() const override;
    std::wstring ToString() const override;
    void FromString(const std::wstring& text) override;
    JsonValue ToJson() const override;
    void FromJson(const JsonValue& value) override;
    std::shared_ptr<Data> Clone() const override;
    void Initialize() override;
    using Data::Initialize;

private:
    std::shared_ptr<enumDataRecord> enumData;
};

}  // namespace Velmar::Lattix
