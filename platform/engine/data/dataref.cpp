#include "Velmar/Lattix/DataRef.h"

#include <cmath>

#include "LattixBasic/Color.h"
#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/DictionaryData.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/FileData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/StringData.h"
#include "Velmar/Lattix/UnsignedData.h"

namespace Velmar::Lattix {

struct dataRefRecord {
    std::shared_ptr<DictionaryData> dictionary;
    std::wstring key;
};

DataRef::DataRef(std::shared_ptr<DictionaryData> dictionary, std::wstring key)
    : dataRef(
          std::make_shared<dataRefRecord>(dataRefRecord{std::move(dictionary), std::move(key)})) {
    if (!dataRef->dictionary) QUARN_THROW("A data reference needs a dictionary.");
}

bool DataRef::IsNull() const {
    return !dataRef->dictionary->Has(dataRef->key);
}
std::shared_ptr<Data> DataRef::AsData() const {
    return dataRef->dictionary->Get(dataRef->key);
}

std::wstring DataRef::AsString() const {
    auto data = AsData();
    if (auto text = std::dynamic_pointer_cast<StringData>(data)) return text->GetValue();
    if (auto file = std::dynamic_pointer_cast<FileData>(data)) return file->GetValue();
    return {};
}

std::int64_t DataRef::AsInt() const {
    auto data = AsData();
    if (auto value = std::dynamic_pointer_cast<IntData>(data)) return value->GetValue();
    if (auto value = std::dynamic_pointer_cast<UnsignedData>(data))
        return static_cast<std::int64_t>(value->GetValue());
    if (auto value = std::dynamic_pointer_cast<DoubleData>(data)) {
        double number = std::trunc(value->GetValue());
        if (!std::isfinite(number) || std::fabs(number) > 9.2e18) return 0;
        return static_cast<std::int64_t>(number);
    }
    if (auto value = std::dynamic_pointer_cast<BoolData>(data)) return value->GetValue() ? 1 : 0;
    return 0;
}

double DataRef::AsDouble() const {
    auto data = AsData();
    if (auto value = std::dynamic_pointer_cast<DoubleData>(data)) return value->GetValue();
    if (auto value = std::dynamic_pointer_cast<IntData>(data))
        return static_cast<double>(value->GetValue());
    if (auto value = std::dynamic_pointer_cast<UnsignedData>(data))
        return static_cast<double>(value->GetValue());
    if (auto value = std::dynamic_pointer_cast<BoolData>(data))
        return value->GetValue() ? 1.0 : 0.0;
    return 0.0;
}

bool DataRef::AsBool() const {
    auto data = AsData();
    if (auto value = std::dynamic_pointer_cast<BoolData>(data)) return value->GetValue();
    if (auto value = std::dynamic_pointer_cast<IntData>(data)) return value->GetValue() != 0;
    if (auto value = std::dynamic_pointer_cast<UnsignedData>(data)) return value->GetValue() != 0;
    return false;
}

DataRef& DataRef::operator=(std::shared_ptr<Data> value) {
    dataRef->dictionary->Set(dataRef->key, std::move(value));
    return *this;
}
DataRef& DataRef::operator=(const std::wstring& value) {
    return *this = std::make_shared<StringData>(value);
}
DataRef& DataRef::operator=(const wchar_t* value) {
    return *this = std::wstring(value ? value : L"");
}
DataRef& DataRef::operator=(std::int64_t value) {
    return *this = std::make_shared<IntData>(value);
}
DataRef& DataRef::operator=(int value) {
    return *this = static_cast<std::int64_t>(value);
}
DataRef& DataRef::operator=(double value) {
    return *this = std::make_shared<DoubleData>(value);
}
DataRef& DataRef::operator=(bool value) {
    return *this = std::make_shared<BoolData>(value);
}

const std::wstring& DataRef::GetKey() const {
    return dataRef->key;
}

}  // namespace Velmar::Lattix
