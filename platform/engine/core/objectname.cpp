#include "Velmar/Lattix/ObjectName.h"

#include <stdexcept>

namespace Velmar::Lattix {

ObjectName::ObjectName(std::wstring nameSpace, std::wstring name)
    : nameSpace(std::move(nameSpace)), name(std::move(name)) {}

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
    return nameSpace + L"." + name;
}

}  // namespace Velmar::Lattix
