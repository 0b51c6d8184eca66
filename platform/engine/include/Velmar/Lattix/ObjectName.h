#pragma once

#include <compare>
#include <string>

namespace Velmar::Lattix {

// The identity of an operator or a data type: a namespace and a name. The full name is the
// namespace, ".", and the name ("TAMARIN.Int"). A plain value; copy freely.
class ObjectName {
public:
    ObjectName() = default;
    ObjectName(std::wstring nameSpace, std::wstring name);

    // Splits a full name at its only dot. Anything but two non-empty pieces raises
    // std::runtime_error("Invalid full name format.").
    static ObjectName Parse(const std::wstring& fullName);
    // Like Parse, but answers false instead of raising.
    static bool TryParse(const std::wstring& fullName, ObjectName& result);

    const std::wstring& GetNamespace() const { return nameSpace; }
    const std::wstring& GetName() const { return name; }
    std::wstring GetFullName() const;
    bool IsEmpty() const { return nameSpace.empty() && name.empty(); }

    auto operator<=>(const ObjectName&) const = default;
    bool operator==(const ObjectName&) const = default;

private:
    std::wstring nameSpace;
    std::wstring name;
};

}  // namespace Velmar::Lattix
