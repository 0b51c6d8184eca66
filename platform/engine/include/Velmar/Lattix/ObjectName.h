#pragma once

#include <compare>
#include <memory>
#include <string>

namespace Velmar::Lattix {

// The identity of an operator or a data type: a namespace and a name. The full name is the
// namespace, ".", and the name ("TAMARIN.Int"). A plain value; copy freely: copies share the
// (immutable) text, so that port type lists and data values do not allocate when copied.
struct objectNameRecord;

class ObjectName {
public:
    ObjectName() = default;
    ObjectName(std::wstring nameSpace, std::wstring name);

    // Splits a full name at its only dot. Anything but two non-empty pieces raises
    // std::runtime_error("Invalid full name format.").
    static ObjectName Parse(const std::wstring& fullName);
    // Like Parse, but answers false instead of raising.
    static bool TryParse(const std::wstring& fullName, ObjectName& result);

    const std::wstring& GetNamespace() const;
    const std::wstring& GetName() const;
    std::wstring GetFullName() const;
    bool IsEmpty() const { return GetNamespace().empty() && GetName().empty(); }

    // By namespace, then name.
    std::strong_ordering operator<=>(const ObjectName& other) const;
    bool operator==(const ObjectName& other) const;

private:
    // Null for the empty name.
    std::shared_ptr<const objectNameRecord> objectNameData;
};

}  // namespace Velmar::Lattix
