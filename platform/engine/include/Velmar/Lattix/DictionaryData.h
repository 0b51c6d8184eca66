#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/DataRef.h"

namespace Velmar::Lattix {

struct dictionaryDataRecord;

// Named values of any types, "TAMARIN.Dictionary", ordered by key. A text annotation of a model is
// one dictionary ("String", "PositionX", "PositionY", "Font", "Size", "Color", "Bold", "Italics",
// "Underline"). Text and JSON form: a JSON object of key to {"type": full name, "value": JSON}.
class DictionaryData : public Data, public std::enable_shared_from_this<DictionaryData> {
public:
    DictionaryData();

    static ObjectName DefaultTypeName();

    // The value stored under key (the value itself, not a copy), or null when absent.
    std::shared_ptr<Data> Get(const std::wstring& key) const;
    // Stores value under key; a null value removes the key.
    void Set(const std::wstring& key, std::shared_ptr<Data> value);
    bool Remove(const std::wstring& key);
    bool Has(const std::wstring& key) const;
    std::vector<std::wstring> GetKeys() const;
    std::map<std::wstring, std::shared_ptr<Data>> GetEntries() const;

    // A reference to the entry under key, for reading and assigning. This dictionary must be held
    // by a shared pointer; the reference keeps it alive.
    DataRef operator[](const std::wstring& key);

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
    std::shared_ptr<dictionaryDataRecord> dictionaryData;
};

}  // namespace Velmar::Lattix
