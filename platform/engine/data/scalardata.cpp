// The single-value data types: Int, Unsigned, Double, Bool, String and File.
#include <cmath>
#include <limits>

#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/FileData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/StringData.h"
#include "Velmar/Lattix/UnsignedData.h"
#include "core/textutil.h"
#include "data/datautil.h"

namespace Velmar::Lattix {

using detail::RaiseJsonError;
using detail::RaiseReadError;

ObjectName Data::DefaultTypeName() {
    static const ObjectName name(L"TAMARIN", L"Data");
    return name;
}

bool Data::Equals(const Data& other) const {
    return GetDataTypeName() == other.GetDataTypeName() && ToJson() == other.ToJson();
}

// ---- Int
struct intDataRecord {
    std::int64_t value = 0;
};

IntData::IntData() : intData(std::make_shared<intDataRecord>()) {}
IntData::IntData(std::int64_t value)
    : intData(std::make_shared<intDataRecord>(intDataRecord{value})) {}
ObjectName IntData::DefaultTypeName() {
    static const ObjectName name(L"TAMARIN", L"Int");
    return name;
}
std::int64_t IntData::GetValue() const {
    return intData->value;
}
void IntData::SetValue(std::int64_t value) {
    intData->value = value;
}
ObjectName IntData::GetDataTypeName() const {
    return DefaultTypeName();
}
std::wstring IntData::ToString() const {
    return std::to_wstring(intData->value);
}
void IntData::FromString(const std::wstring& text) {
    long long value = 0;
    if (!detail::ReadInt64(text, value))
        RaiseReadError(__PRETTY_FUNCTION__, DefaultTypeName(), text,
                       L"a whole number from -9223372036854775808 to 9223372036854775807");
    intData->value = value;
}
JsonValue IntData::ToJson() const {
    return JsonValue(nlohmann::json(intData->value));
}
void IntData::FromJson(const JsonValue& value) {
    const auto& json = value.GetJson();
    if (json.is_number_integer()) {
        if (json.is_number_unsigned() &&
            json.get<std::uint64_t>() >
                static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value, L"a 64-bit whole number");
        intData->value = json.get<std::int64_t>();
        return;
    }
    RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value, L"a whole number");
}
std::shared_ptr<Data> IntData::Clone() const {
    return std::make_shared<IntData>(intData->value);
}
void IntData::Initialize() {
    intData->value = 0;
}

// ---- Unsigned
struct unsignedDataRecord {
    std::uint64_t value = 0;
};

UnsignedData::UnsignedData() : unsignedData(std::make_shared<unsignedDataRecord>()) {}
UnsignedData::UnsignedData(std::uint64_t value)
    : unsignedData(std::make_shared<unsignedDataRecord>(unsignedDataRecord{value})) {}
ObjectName UnsignedData::DefaultTypeName() {
    static const ObjectName name(L"TAMARIN", L"Unsigned");
    return name;
}
std::uint64_t UnsignedData::GetValue() const {
    return unsignedData->value;
}
void UnsignedData::SetValue(std::uint64_t value) {
    unsignedData->value = value;
}
ObjectName UnsignedData::GetDataTypeName() const {
    return DefaultTypeName();
}
std::wstring UnsignedData::ToString() const {
    return std::to_wstring(unsignedData->value);
}
void UnsignedData::FromString(const std::wstring& text) {
    unsigned long long value = 0;
    if (!detail::ReadUInt64(text, value))
        RaiseReadError(__PRETTY_FUNCTION__, DefaultTypeName(), text,
                       L"a whole number from 0 to 18446744073709551615");
    unsignedData->value = value;
}
JsonValue UnsignedData::ToJson() const {
    return JsonValue(nlohmann::json(unsignedData->value));
}
void UnsignedData::FromJson(const JsonValue& value) {
    const auto& json = value.GetJson();
    if (json.is_number_unsigned() || (json.is_number_integer() && json.get<std::int64_t>() >= 0)) {
        unsignedData->value = json.get<std::uint64_t>();
        return;
    }
    RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value, L"a whole number of 0 or more");
}
std::shared_ptr<Data> UnsignedData::Clone() const {
    return std::make_shared<UnsignedData>(unsignedData->value);
}
void UnsignedData::Initialize() {
    unsignedData->value = 0;
}

// ---- Double
struct doubleDataRecord {
    double value = 0.0;
};

DoubleData::DoubleData() : doubleData(std::make_shared<doubleDataRecord>()) {}
DoubleData::DoubleData(double value)
    : doubleData(std::make_shared<doubleDataRecord>(doubleDataRecord{value})) {}
ObjectName DoubleData::DefaultTypeName() {
    static const ObjectName name(L"TAMARIN", L"Double");
    return name;
}
double DoubleData::GetValue() const {
    return doubleData->value;
}
void DoubleData::SetValue(double value) {
    doubleData->value = value;
}
ObjectName DoubleData::GetDataTypeName() const {
    return DefaultTypeName();
}
std::wstring DoubleData::ToString() const {
    return detail::DoubleToText(doubleData->value);
}
void DoubleData::FromString(const std::wstring& text) {
    double value = 0;
    if (!detail::ReadDouble(text, value))
        RaiseReadError(__PRETTY_FUNCTION__, DefaultTypeName(), text,
                       L"a number such as 2.5 or -1e3");
    doubleData->value = value;
}
JsonValue DoubleData::ToJson() const {
    // JSON has no infinities or NaN: those travel as their text.
    if (!std::isfinite(doubleData->value))
        return JsonValue(nlohmann::json(detail::ToUtf8(ToString())));
    return JsonValue(nlohmann::json(doubleData->value));
}
void DoubleData::FromJson(const JsonValue& value) {
    const auto& json = value.GetJson();
    if (json.is_number()) {
        doubleData->value = json.get<double>();
        return;
    }
    if (json.is_string()) {
        double parsed = 0;
        auto text = detail::FromUtf8(json.get<std::string>());
        auto word = detail::Lower(text);
        if ((word == L"inf" || word == L"-inf" || word == L"nan") &&
            detail::ReadDouble(text, parsed)) {
            doubleData->value = parsed;
            return;
        }
    }
    RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value, L"a number");
}
std::shared_ptr<Data> DoubleData::Clone() const {
    return std::make_shared<DoubleData>(doubleData->value);
}
void DoubleData::Initialize() {
    doubleData->value = 0.0;
}

// ---- Bool
struct boolDataRecord {
    bool value = false;
};

BoolData::BoolData() : boolData(std::make_shared<boolDataRecord>()) {}
BoolData::BoolData(bool value)
    : boolData(std::make_shared<boolDataRecord>(boolDataRecord{value})) {}
ObjectName BoolData::DefaultTypeName() {
    static const ObjectName name(L"TAMARIN", L"Bool");
    return name;
}
bool BoolData::GetValue() const {
    return boolData->value;
}
void BoolData::SetValue(bool value) {
    boolData->value = value;
}
ObjectName BoolData::GetDataTypeName() const {
    return DefaultTypeName();
}
std::wstring BoolData::ToString() const {
    return boolData->value ? L"true" : L"false";
}
void BoolData::FromString(const std::wstring& text) {
    bool value = false;
    if (!detail::ReadBool(text, value))
        RaiseReadError(__PRETTY_FUNCTION__, DefaultTypeName(), text, L"true or false");
    boolData->value = value;
}
JsonValue BoolData::ToJson() const {
    return JsonValue(nlohmann::json(boolData->value));
}
void BoolData::FromJson(const JsonValue& value) {
    if (!value.GetJson().is_boolean())
        RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value, L"true or false");
    boolData->value = value.GetJson().get<bool>();
}
std::shared_ptr<Data> BoolData::Clone() const {
    return std::make_shared<BoolData>(boolData->value);
}
void BoolData::Initialize() {
    boolData->value = false;
}

// ---- String
struct stringDataRecord {
    std::wstring value;
};

StringData::StringData() : stringData(std::make_shared<stringDataRecord>()) {}
StringData::StringData(const std::wstring& value)
    : stringData(std::make_shared<stringDataRecord>(stringDataRecord{value})) {}
ObjectName StringData::DefaultTypeName() {
    static const ObjectName name(L"TAMARIN", L"String");
    return name;
}
std::wstring StringData::GetValue() const {
    return stringData->value;
}
void StringData::SetValue(const std::wstring& value) {
    stringData->value = value;
}
ObjectName StringData::GetDataTypeName() const {
    return DefaultTypeName();
}
std::wstring StringData::ToString() const {
    return stringData->value;
}
void StringData::FromString(const std::wstring& text) {
    stringData->value = text;
}
JsonValue StringData::ToJson() const {
    return JsonValue(nlohmann::json(detail::ToUtf8(stringData->value)));
}
void StringData::FromJson(const JsonValue& value) {
    if (!value.GetJson().is_string())
        RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value, L"a JSON string");
    stringData->value = detail::FromUtf8(value.GetJson().get<std::string>());
}
std::shared_ptr<Data> StringData::Clone() const {
    return std::make_shared<StringData>(stringData->value);
}
void StringData::Initialize() {
    stringData->value.clear();
}

// ---- File
struct fileDataRecord {
    std::wstring value;
};

namespace {
bool IsValidFileName(const std::wstring& text) {
    return text.find_first_of(std::wstring(L"\n\r\0", 3)) == std::wstring::npos;
}
}  // namespace

FileData::FileData() : fileData(std::make_shared<fileDataRecord>()) {}
FileData::FileData(const std::wstring& value) : fileData(std::make_shared<fileDataRecord>()) {
    SetValue(value);
}
ObjectName FileData::DefaultTypeName() {
    static const ObjectName name(L"TAMARIN", L"File");
    return name;
}
std::wstring FileData::GetValue() const {
    return fileData->value;
}
void FileData::SetValue(const std::wstring& value) {
    FromString(value);
}
ObjectName FileData::GetDataTypeName() const {
    return DefaultTypeName();
}
std::wstring FileData::ToString() const {
    return fileData->value;
}
void FileData::FromString(const std::wstring& text) {
    if (!IsValidFileName(text))
        RaiseReadError(__PRETTY_FUNCTION__, DefaultTypeName(), text,
                       L"a file name without line breaks or NUL characters");
    fileData->value = text;
}
JsonValue FileData::ToJson() const {
    return JsonValue(nlohmann::json(detail::ToUtf8(fileData->value)));
}
void FileData::FromJson(const JsonValue& value) {
    if (!value.GetJson().is_string())
        RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value, L"a JSON string");
    FromString(detail::FromUtf8(value.GetJson().get<std::string>()));
}
std::shared_ptr<Data> FileData::Clone() const {
    return std::make_shared<FileData>(fileData->value);
}
void FileData::Initialize() {
    fileData->value.clear();
}

}  // namespace Velmar::Lattix
