#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Data.h"

namespace Velmar::Lattix {

struct listDataRecord;

// A list of values of any types, "TAMARIN.List". The item type says how text items are read:
// with the generic type "TAMARIN.Data" (the initial one) each item becomes the first of Int,
// Double, Bool that reads it, else a String. Text form: the items' texts joined as in
// StringListData. JSON form: an array of {"type": full name, "value": item JSON}.
class ListData : public Data {
public:
    ListData();
    explicit ListData(std::vector<std::shared_ptr<Data>> items);

    static ObjectName DefaultTypeName();

    // The items themselves (not copies); a null item is not allowed.
    std::vector<std::shared_ptr<Data>> GetItems() const;
    void SetItems(std::vector<std::shared_ptr<Data>> items);
    void Append(std::shared_ptr<Data> item);
    std::size_t Size() const;
    // The item at index; an index past the end raises QuarnLog::Exception.
    std::shared_ptr<Data> At(std::size_t index) const;

    ObjectName GetItemType() const;
    void SetItemType(const ObjectName& type);

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
    std::shared_ptr<listDataRecord> listData;
};

}  // namespace Velmar::Lattix
