// The data types made of several values: StringList, List, Dictionary, and the generic type.
#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/DataFactory.h"
#include "Velmar/Lattix/DictionaryData.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/GenericData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/ListData.h"
#include "Velmar/Lattix/StringData.h"
#include "Velmar/Lattix/StringListData.h"
#include "core/textutil.h"
#include "data/datautil.h"

namespace Velmar::Lattix {

using detail::RaiseJsonError;
using detail::RaiseReadError;

// ---- StringList
struct stringListDataRecord {
    std::vector<std::wstring> items;
};

StringListData::StringListData() : stringListData(std::make_shared<stringListDataRecord>()) {}
StringListData::StringListData(std::vector<std::wstring> items)
    : stringListData(
          std::make_shared<stringListDataRecord>(stringListDataRecord{std::move(items)})) {}
ObjectName StringListData::DefaultTypeName() {
    static const ObjectName name(L"TAMARIN", L"StringList");
    return name;
}
std::vector<std::wstring> StringListData::GetValue() const {
    return stringListData->items;
}
void StringListData::SetValue(std::vector<std::wstring> items) {
    stringListData->items = std::move(items);
}
void StringListData::Append(const std::wstring& item) {
    stringListData->items.push_back(item);
}
std::size_t StringListData::Size() const {
    return stringListData->items.size();
}
ObjectName StringListData::GetDataTypeName() const {
    return DefaultTypeName();
}

std::wstring StringListData::JoinItems(const std::vector<std::wstring>& items) {
    std::wstring result;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i) result += L", ";
        const auto& item = items[i];
        bool quote = item.empty() || item.find_first_of(L",\"") != std::wstring::npos ||
                     detail::Trim(item) != item;
        if (!quote) {
            result += item;
            continue;
        }
        result += L'"';
        for (auto c : item) {
            if (c == L'"') result += L'"';
            result += c;
        }
        result += L'"';
    }
    return result;
}

std::vector<std::wstring> StringListData::SplitItems(const std::wstring& text) {
    std::vector<std::wstring> items;
    if (detail::Trim(text).empty()) return items;
    std::size_t i = 0;
    const std::size_t n = text.size();
    while (true) {
        while (i < n && (text[i] == L' ' || text[i] == L'\t')) ++i;
        std::wstring item;
        if (i < n && text[i] == L'"') {
            const std::size_t open = i++;
            bool closed = false;
            while (i < n) {
                if (text[i] == L'"') {
                    if (i + 1 < n && text[i + 1] == L'"') {
                        item += L'"';
                        i += 2;
                        continue;
                    }
                    ++i;
                    closed = true;
                    break;
                }
                item += text[i++];
            }
            if (!closed)
                QUARN_THROW(L"The quote opened at position " + std::to_wstring(open + 1) + L" of " +
                            detail::Quote(text) + L" is never closed.");
            while (i < n && (text[i] == L' ' || text[i] == L'\t')) ++i;
            if (i < n && text[i] != L',')
                QUARN_THROW(L"Expected a comma after the quoted item at position " +
                            std::to_wstring(i + 1) + L" of " + detail::Quote(text) + L".");
        } else {
            std::size_t end = text.find(L',', i);
            if (end == std::wstring::npos) end = n;
            item = detail::Trim(std::wstring_view(text).substr(i, end - i));
            i = end;
        }
        items.push_back(item);
        if (i >= n) break;
        ++i;  // the comma
    }
    return items;
}

std::wstring StringListData::ToString() const {
    return JoinItems(stringListData->items);
}
void StringListData::FromString(const std::wstring& text) {
    stringListData->items = SplitItems(text);
}
JsonValue StringListData::ToJson() const {
    nlohmann::json array = nlohmann::json::array();
    for (const auto& item : stringListData->items) array.push_back(detail::ToUtf8(item));
    return JsonValue(std::move(array));
}
void StringListData::FromJson(const JsonValue& value) {
    const auto& json = value.GetJson();
    if (!json.is_array())
        RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value, L"an array of strings");
    std::vector<std::wstring> items;
    for (const auto& item : json) {
        if (!item.is_string())
            RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value, L"an array of strings");
        items.push_back(detail::FromUtf8(item.get<std::string>()));
    }
    stringListData->items = std::move(items);
}
std::shared_ptr<Data> StringListData::Clone() const {
    return std::make_shared<StringListData>(stringListData->items);
}
void StringListData::Initialize() {
    stringListData->items.clear();
}

// ---- List
struct listDataRecord {
    std::vector<std::shared_ptr<Data>> items;
    ObjectName itemType = Data::DefaultTypeName();
};

ListData::ListData() : listData(std::make_shared<listDataRecord>()) {}
ListData::ListData(std::vector<std::shared_ptr<Data>> items)
    : listData(std::make_shared<listDataRecord>()) {
    SetItems(std::move(items));
}
ObjectName ListData::DefaultTypeName() {
    static const ObjectName name(L"TAMARIN", L"List");
    return name;
}
std::vector<std::shared_ptr<Data>> ListData::GetItems() const {
    return listData->items;
}
void ListData::SetItems(std::vector<std::shared_ptr<Data>> items) {
    for (const auto& item : items)
        if (!item) QUARN_THROW("A list cannot hold an empty item.");
    listData->items = std::move(items);
}
void ListData::Append(std::shared_ptr<Data> item) {
    if (!item) QUARN_THROW("A list cannot hold an empty item.");
    listData->items.push_back(std::move(item));
}
std::size_t ListData::Size() const {
    return listData->items.size();
}
std::shared_ptr<Data> ListData::At(std::size_t index) const {
    if (index >= listData->items.size())
        QUARN_THROW("List index " + std::to_string(index) + " is past the end of a list of " +
                    std::to_string(listData->items.size()) + " items.");
    return listData->items[index];
}
ObjectName ListData::GetItemType() const {
    return listData->itemType;
}
void ListData::SetItemType(const ObjectName& type) {
    listData->itemType = type;
}
ObjectName ListData::GetDataTypeName() const {
    return DefaultTypeName();
}

std::wstring ListData::ToString() const {
    std::vector<std::wstring> texts;
    for (const auto& item : listData->items) texts.push_back(item->ToString());
    return StringListData::JoinItems(texts);
}

void ListData::FromString(const std::wstring& text) {
    std::vector<std::shared_ptr<Data>> items;
    for (const auto& piece : StringListData::SplitItems(text)) {
        if (listData->itemType != Data::DefaultTypeName()) {
            items.push_back(DataFactory::FromString(listData->itemType, piece));
            continue;
        }
        long long whole = 0;
        double number = 0;
        bool flag = false;
        if (detail::ReadInt64(piece, whole))
            items.push_back(std::make_shared<IntData>(whole));
        else if (detail::ReadDouble(piece, number))
            items.push_back(std::make_shared<DoubleData>(number));
        else if (detail::ReadBool(piece, flag))
            items.push_back(std::make_shared<BoolData>(flag));
        else
            items.push_back(std::make_shared<StringData>(piece));
    }
    listData->items = std::move(items);
}

JsonValue ListData::ToJson() const {
    nlohmann::json array = nlohmann::json::array();
    for (const auto& item : listData->items)
        array.push_back(DataFactory::ToTypedJson(*item).GetJson());
    return JsonValue(std::move(array));
}
void ListData::FromJson(const JsonValue& value) {
    if (!value.GetJson().is_array())
        RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value,
                       L"an array of {\"type\": ..., \"value\": ...}");
    std::vector<std::shared_ptr<Data>> items;
    for (const auto& item : value.GetJson())
        items.push_back(DataFactory::FromTypedJson(JsonValue(item)));
    listData->items = std::move(items);
}
std::shared_ptr<Data> ListData::Clone() const {
    auto copy = std::make_shared<ListData>();
    for (const auto& item : listData->items) copy->listData->items.push_back(item->Clone());
    copy->listData->itemType = listData->itemType;
    return copy;
}
void ListData::Initialize() {
    listData->items.clear();
}

// ---- Generic
struct genericDataRecord {
    JsonValue value;
};

GenericData::GenericData() : genericData(std::make_shared<genericDataRecord>()) {}
GenericData::GenericData(JsonValue value)
    : genericData(std::make_shared<genericDataRecord>(genericDataRecord{std::move(value)})) {}
ObjectName GenericData::DefaultTypeName() {
    return Data::DefaultTypeName();
}
JsonValue GenericData::GetValue() const {
    return genericData->value;
}
void GenericData::SetValue(JsonValue value) {
    genericData->value = std::move(value);
}
ObjectName GenericData::GetDataTypeName() const {
    return DefaultTypeName();
}
std::wstring GenericData::ToString() const {
    return detail::FromUtf8(genericData->value.ToText());
}
void GenericData::FromString(const std::wstring& text) {
    auto parsed = nlohmann::json::parse(detail::ToUtf8(text), nullptr, false);
    genericData->value = parsed.is_discarded() ? JsonValue(nlohmann::json(detail::ToUtf8(text)))
                                               : JsonValue(std::move(parsed));
}
JsonValue GenericData::ToJson() const {
    return genericData->value;
}
void GenericData::FromJson(const JsonValue& value) {
    genericData->value = value;
}
std::shared_ptr<Data> GenericData::Clone() const {
    return std::make_shared<GenericData>(genericData->value);
}
void GenericData::Initialize() {
    genericData->value = JsonValue();
}

// ---- Dictionary
struct dictionaryDataRecord {
    std::map<std::wstring, std::shared_ptr<Data>> entries;
};

DictionaryData::DictionaryData() : dictionaryData(std::make_shared<dictionaryDataRecord>()) {}
ObjectName DictionaryData::DefaultTypeName() {
    static const ObjectName name(L"TAMARIN", L"Dictionary");
    return name;
}
std::shared_ptr<Data> DictionaryData::Get(const std::wstring& key) const {
    auto found = dictionaryData->entries.find(key);
    return found == dictionaryData->entries.end() ? nullptr : found->second;
}
void DictionaryData::Set(const std::wstring& key, std::shared_ptr<Data> value) {
    if (!value) {
        dictionaryData->entries.erase(key);
        return;
    }
    dictionaryData->entries[key] = std::move(value);
}
bool DictionaryData::Remove(const std::wstring& key) {
    return dictionaryData->entries.erase(key) > 0;
}
bool DictionaryData::Has(const std::wstring& key) const {
    return dictionaryData->entries.count(key) > 0;
}
std::vector<std::wstring> DictionaryData::GetKeys() const {
    std::vector<std::wstring> keys;
    for (const auto& [key, value] : dictionaryData->entries) keys.push_back(key);
    return keys;
}
std::map<std::wstring, std::shared_ptr<Data>> DictionaryData::GetEntries() const {
    return dictionaryData->entries;
}
DataRef DictionaryData::operator[](const std::wstring& key) {
    return DataRef(shared_from_this(), key);
}
ObjectName DictionaryData::GetDataTypeName() const {
    return DefaultTypeName();
}
std::wstring DictionaryData::ToString() const {
    return detail::FromUtf8(ToJson().ToText());
}
void DictionaryData::FromString(const std::wstring& text) {
    auto parsed = nlohmann::json::parse(detail::ToUtf8(text), nullptr, false);
    if (parsed.is_discarded() || !parsed.is_object())
        RaiseReadError(__PRETTY_FUNCTION__, DefaultTypeName(), text,
                       L"a JSON object of key to {\"type\": ..., \"value\": ...}");
    FromJson(JsonValue(std::move(parsed)));
}
JsonValue DictionaryData::ToJson() const {
    nlohmann::json object = nlohmann::json::object();
    for (const auto& [key, value] : dictionaryData->entries)
        object[detail::ToUtf8(key)] = DataFactory::ToTypedJson(*value).GetJson();
    return JsonValue(std::move(object));
}
void DictionaryData::FromJson(const JsonValue& value) {
    if (!value.GetJson().is_object())
        RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value,
                       L"an object of key to {\"type\": ..., \"value\": ...}");
    std::map<std::wstring, std::shared_ptr<Data>> entries;
    for (const auto& [key, item] : value.GetJson().items())
        entries[detail::FromUtf8(key)] = DataFactory::FromTypedJson(JsonValue(item));
    dictionaryData->entries = std::move(entries);
}
std::shared_ptr<Data> DictionaryData::Clone() const {
    auto copy = std::make_shared<DictionaryData>();
    for (const auto& [key, value] : dictionaryData->entries)
        copy->dictionaryData->entries[key] = value->Clone();
    return copy;
}
void DictionaryData::Initialize() {
    dictionaryData->entries.clear();
}

}  // namespace Velmar::Lattix
