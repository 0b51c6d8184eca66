#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Data.h"

namespace Velmar::Lattix {

struct stringListDataRecord;

// A list of texts, "TAMARIN.StringList". Text form: the items separated by ", "; an item that
// holds a comma, a double quote or leading or trailing blanks, or is empty, is written in double
// quotes with inner quotes doubled ("a, b", "say ""hi""").
class StringListData : public Data {
public:
    StringListData();
    explicit StringListData(std::vector<std::wstring> items);

    static ObjectName DefaultTypeName();

    std::vector<std::wstring> GetValue() const;
    void SetValue(std::vector<std::wstring> items);
    void Append(const std::wstring& item);
    std::size_t Size() const;

    ObjectName GetDataTypeName() const override;
    std::wstring ToString() const override;
    void FromString(const std::wstring& text) override;
    JsonValue ToJson() const override;
    void FromJson(const JsonValue& value) override;
    std::shared_ptr<Data> Clone() const override;
    void Initialize() override;
    using Data::Initialize;
    bool IsPlainValue() const override { return false; }

    // The item syntax shared with ListData: splits a text into items (quotes as above); a quote
    // left open raises QuarnLog::Exception naming the position.
    static std::vector<std::wstring> SplitItems(const std::wstring& text);
    static std::wstring JoinItems(const std::vector<std::wstring>& items);

private:
    std::shared_ptr<stringListDataRecord> stringListData;
};

}  // namespace Velmar::Lattix
