#include "ZML/PartPropertyList.h"

#include <algorithm>
#include <cwctype>
#include <list>

namespace ZML {

// A std::list keeps the references PropertyAt hands out valid while other properties are added.
struct partPropertyListData {
    std::list<std::pair<std::wstring, std::wstring>> entries;

    std::pair<std::wstring, std::wstring>* Lookup(const std::wstring& name) {
        auto it = std::find_if(entries.begin(), entries.end(),
                               [&name](const auto& entry) { return entry.first == name; });
        return it == entries.end() ? nullptr : &*it;
    }
};

PartPropertyList::PartPropertyList() : propertyListData(std::make_shared<partPropertyListData>()) {}
PartPropertyList::~PartPropertyList() = default;
PartPropertyList::PartPropertyList(const PartPropertyList& other)
    : propertyListData(std::make_shared<partPropertyListData>(*other.propertyListData)) {}
PartPropertyList& PartPropertyList::operator=(const PartPropertyList& other) {
    if (this != &other) {
        *propertyListData = *other.propertyListData;
    }
    return *this;
}

std::wstring& PartPropertyList::PropertyAt(const std::wstring& name) {
    if (auto* entry = propertyListData->Lookup(name)) {
        return entry->second;
    }
    propertyListData->entries.emplace_back(name, std::wstring{});
    return propertyListData->entries.back().second;
}

std::optional<std::wstring> PartPropertyList::Get(const std::wstring& name) const {
    if (auto* entry = propertyListData->Lookup(name)) {
        return entry->second;
    }
    return std::nullopt;
}

bool PartPropertyList::IsYes(const std::wstring& name) const {
    auto value = Get(name);
    if (!value) {
        return false;
    }
    std::wstring lower;
    for (wchar_t c : *value) {
        lower.push_back(static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c))));
    }
    return lower == L"yes" || lower == L"true" || lower == L"1" || lower == L"on";
}

void PartPropertyList::Set(const std::wstring& name, const std::wstring& value) {
    PropertyAt(name) = value;
}

bool PartPropertyList::Has(const std::wstring& name) const {
    return propertyListData->Lookup(name) != nullptr;
}

bool PartPropertyList::Remove(const std::wstring& name) {
    auto& entries = propertyListData->entries;
    auto before = entries.size();
    entries.remove_if([&name](const auto& entry) { return entry.first == name; });
    return entries.size() != before;
}

void PartPropertyList::Clear() {
    propertyListData->entries.clear();
}

std::vector<std::pair<std::wstring, std::wstring>> PartPropertyList::Entries() const {
    return {propertyListData->entries.begin(), propertyListData->entries.end()};
}

std::size_t PartPropertyList::Size() const {
    return propertyListData->entries.size();
}

}  // namespace ZML
