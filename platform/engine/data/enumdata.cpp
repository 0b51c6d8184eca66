#include "Velmar/Lattix/EnumData.h"

#include "QuarnLog/Exception.h"
#include "core/textutil.h"
#include "data/datautil.h"

namespace Velmar::Lattix {

struct enumDataRecord {
    ObjectName typeName;
    std::vector<std::wstring> names;
    std::size_t selected = 0;
};

EnumData::EnumData(ObjectName typeName, std::vector<std::wstring> names)
    : enumData(std::make_shared<enumDataRecord>()) {
    if (names.empty())
        QUARN_THROW(L"The enumeration " + typeName.GetFullName() + L" has no values.");
    enumData->typeName = std::move(typeName);
    enumData->names = std::move(names);
}

std::vector<std::wstring> EnumData::GetValueNames() const {
    return enumData->names;
}
std::wstring EnumData::GetSelectedName() const {
    return enumData->names[enumData->selected];
}
std::size_t EnumData::GetSelectedIndex() const {
    return enumData->selected;
}

bool EnumData::SelectByName(const std::wstring& name) {
    auto wanted = detail::Trim(name);
    for (std::size_t i = 0; i < enumData->names.size(); ++i) {
        if (detail::EqualsNoCase(enumData->names[i], wanted)) {
            enumData->selected = i;
            return true;
        }
    }
    return false;
}

ObjectName EnumData::GetDataTypeName() const {
    return enumData->typeName;
}
std::wstring EnumData::ToString() const {
    return GetSelectedName();
}
void EnumData::FromString(const std::wstring& text) {
    if (!SelectByName(text))
        detail::RaiseReadError(__PRETTY_FUNCTION__, enumData->typeName, text,
                               L"one of " + detail::Join(enumData->names, L", "));
}
JsonValue EnumData::ToJson() const {
    return JsonValue(nlohmann::json(detail::ToUtf8(GetSelectedName())));
}
void EnumData::FromJson(const JsonValue& value) {
    if (!value.GetJson().is_string() ||
        !SelectByName(detail::FromUtf8(value.GetJson().get<std::string>())))
        detail::RaiseJsonError(__PRETTY_FUNCTION__, enumData->typeName, value,
                               L"one of " + detail::Join(enumData->names, L", "));
}
std::shared_ptr<Data> EnumData::Clone() const {
    auto copy = std::make_shared<EnumData>(enumData->typeName, enumData->names);
    copy->enumData->selected = enumData->selected;
    return copy;
}
void EnumData::Initialize() {
    enumData->selected = 0;
}

}  // namespace Velmar::Lattix
