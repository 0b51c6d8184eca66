#pragma once

#include <string>
#include <vector>

namespace Velmar::Lattix {

// What a value that is one of a fixed set of names offers, so that a user interface can list the
// names and select one.
class EnumDataInterface {
public:
    virtual ~EnumDataInterface() = default;
    virtual std::vector<std::wstring> GetValueNames() const = 0;
    virtual std::wstring GetSelectedName() const = 0;
    // Selects the named value (case-insensitive); answers false and changes nothing for an unknown
    // name.
    virtual bool SelectByName(const std::wstring& name) = 0;
};

}  // namespace Velmar::Lattix
