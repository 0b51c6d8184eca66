#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace quarn::plugin {

struct pluginTypeInfoRecord;

// What a plug-in registry tells about one type it can make, as named text properties. Operator
// types carry "Namespace", "ObjectName", "DisplayName", "DisplayCategory", "Description",
// "Keywords" (separated by ", "), "IsUsableInExpression" ("true"/"false"), "Icon", "uri" (set
// for operators defined by the user in a file), "OriginalNamespace", "OriginalName" and "Syntax"
// (the expression forms, one per line).
class PluginTypeInfo {
public:
    // type: what kind of plug-in this describes ("Operator", "Port").
    explicit PluginTypeInfo(std::wstring type);

    std::wstring GetType() const;
    // The value, or empty when unset.
    std::wstring GetProperty(const std::wstring& key) const;
    bool HasProperty(const std::wstring& key) const;
    void SetProperty(const std::wstring& key, const std::wstring& value);
    std::map<std::wstring, std::wstring> GetProperties() const;
    // The "Syntax" property split into its lines.
    std::vector<std::wstring> GetSyntaxForms() const;
    // "Namespace" + "." + "ObjectName".
    std::wstring GetFullName() const;

    // A copy that shares nothing with this one.
    std::shared_ptr<PluginTypeInfo> Clone() const;

private:
    std::shared_ptr<pluginTypeInfoRecord> pluginTypeInfoData;
};

}  // namespace quarn::plugin
