#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ZML {

struct partPropertyListData;

// The named text properties of a part ("AllowBlank" = "Yes", "WholeNumber" = "Yes", ...), in the
// order they were first set. Names compare exactly. Parts read the properties they know when
// they validate or draw; unknown properties are kept for the backend.
class PartPropertyList {
public:
    PartPropertyList();
    ~PartPropertyList();
    PartPropertyList(const PartPropertyList& other);
    PartPropertyList& operator=(const PartPropertyList& other);

    // The value of `name`, created empty when the list has no such property. The reference stays
    // valid until the list is destroyed or cleared.
    std::wstring& PropertyAt(const std::wstring& name);
    // The value of `name`, or nothing.
    std::optional<std::wstring> Get(const std::wstring& name) const;
    // True when `name` is set to "Yes", "True", "1" or "On" (any case).
    bool IsYes(const std::wstring& name) const;
    void Set(const std::wstring& name, const std::wstring& value);
    bool Has(const std::wstring& name) const;
    bool Remove(const std::wstring& name);
    void Clear();
    std::vector<std::pair<std::wstring, std::wstring>> Entries() const;
    std::size_t Size() const;

private:
    std::shared_ptr<partPropertyListData> propertyListData;
};

}  // namespace ZML
