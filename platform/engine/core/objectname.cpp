#include "Velmar/Lattix/ObjectName.h"

#include <stdexcept>

namespace Velmar::Lattix {

struct objectNameRecord {
    std::wstring nameSpace;
    std::wstring name;
};

namespace {
const std::wstring& Empty() {
    static const std::wstring empty;
    return empty;
}
}  // namespace

ObjectName::ObjectName(std::wstring nameSpace, std::wstring name) {
    if (!nameSpace.empty() || !name.empty())
        objectNameData = std::make_shared<const objectNameRecord>(
            objectNameRecord{std::move(nameSpace), std::move(name)});
}

const std::wstring& ObjectName::GetNamespace() const {
    return objectNameData ? objectNameData->nameSpace : Empty();
}

const std::wstring& ObjectName::GetName() const {
    return objectNameData ? objectNameData->name : Empty();
}

std::strong_ordering ObjectName::operator<=>(const ObjectName& other) const {
    if (objectNameData == other.objectNameData) return std::strong_ordering::equal;
    if (auto order = GetNamespace() <=> other.GetNamespace(); order != 0) return order;
    return GetName() <=> other.GetName();
}

bool ObjectName::operator==(const ObjectName& other) const {
    return objectNameData == other.objectNameData ||
           (GetNamespace() == other.GetNamespace() && GetName() == other.GetName());
}

bool ObjectName::TryParse(const std::wstring& fullName, ObjectName& result) {
    auto dot = fullName.find(L'.');
    if (dot == std::wstring::npos || dot == 0 || dot + 1 >= fullName.size() ||
        fullName.find(L'.', dot + 1) != std::wstring::npos)
        return false;
    result = ObjectName(fullName.substr(0, dot), fullName.substr(dot + 1));
    return true;
}

ObjectName ObjectName::Parse(const std::wstring& fullName) {
    ObjectName result;
    if (!TryParse(fullName, result)) throw std::runtime_error("Invalid full name format.");
    return result;
}

std::wstring ObjectName::GetFullName() const {
    std::wstring full;
    full.reserve(GetNamespace().size() + 1 + GetName().size());
    return full.append(GetNamespace()).append(1, L'.').append(GetName());
}

}  // namespace Velmar::Lattix
