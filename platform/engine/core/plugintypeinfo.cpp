#include "quarn/plugin/PluginTypeInfo.h"

#include "core/textutil.h"

namespace quarn::plugin {

struct pluginTypeInfoRecord {
    std::wstring type;
    std::map<std::wstring, std::wstring> properties;
};

PluginTypeInfo::PluginTypeInfo(std::wstring type)
    : pluginTypeInfoData(std::make_shared<pluginTypeInfoRecord>()) {
    pluginTypeInfoData->type = std::move(type);
}

std::wstring PluginTypeInfo::GetType() const {
    return pluginTypeInfoData->type;
}

std::wstring PluginTypeInfo::GetProperty(const std::wstring& key) const {
    auto found = pluginTypeInfoData->properties.find(key);
    return found == pluginTypeInfoData->properties.end() ? std::wstring() : found->second;
}

bool PluginTypeInfo::HasProperty(const std::wstring& key) const {
    return pluginTypeInfoData->properties.count(key) > 0;
}

void PluginTypeInfo::SetProperty(const std::wstring& key, const std::wstring& value) {
    pluginTypeInfoData->properties[key] = value;
}

std::map<std::wstring, std::wstring> PluginTypeInfo::GetProperties() const {
    return pluginTypeInfoData->properties;
}

std::vector<std::wstring> PluginTypeInfo::GetSyntaxForms() const {
    std::vector<std::wstring> forms;
    auto text = GetProperty(L"Syntax");
    std::size_t start = 0;
    while (start < text.size()) {
        auto end = text.find(L'\n', start);
        if (end == std::wstring::npos) end = text.size();
        if (end > start) forms.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return forms;
}

std::wstring PluginTypeInfo::GetFullName() const {
    return GetProperty(L"Namespace") + L"." + GetProperty(L"ObjectName");
}

std::shared_ptr<PluginTypeInfo> PluginTypeInfo::Clone() const {
    auto copy = std::make_shared<PluginTypeInfo>(pluginTypeInfoData->type);
    copy->pluginTypeInfoData->properties = pluginTypeInfoData->properties;
    return copy;
}

}  // namespace quarn::plugin
