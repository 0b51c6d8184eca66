#pragma once

// The element and attribute names of the model XML (not installed); docs/model-format.md lists
// what each one holds.
namespace Velmar::Lattix::format::xml {

inline constexpr const char* Root = "LattixModel";
inline constexpr const char* FormatVersion = "formatVersion";

inline constexpr const char* ModelElement = "Model";
inline constexpr const char* OperatorElement = "Operator";
inline constexpr const char* PortElement = "Port";
inline constexpr const char* Id = "id";
inline constexpr const char* Namespace = "namespace";
inline constexpr const char* Name = "name";
inline constexpr const char* DisplayName = "displayName";
inline constexpr const char* Icon = "icon";
inline constexpr const char* DisplayCategory = "displayCategory";
inline constexpr const char* ColorCategory = "colorCategory";
inline constexpr const char* UsableInExpression = "usableInExpression";
inline constexpr const char* Uri = "uri";
inline constexpr const char* ProcessName = "processName";
inline constexpr const char* Readonly = "readonly";
inline constexpr const char* Locked = "locked";
inline constexpr const char* PlainFormatForbidden = "plainFormatForbidden";
inline constexpr const char* Description = "Description";
inline constexpr const char* Keywords = "Keywords";
inline constexpr const char* Keyword = "Keyword";
inline constexpr const char* SyntaxForms = "SyntaxForms";
inline constexpr const char* Form = "Form";
inline constexpr const char* PortOrder = "PortOrder";
inline constexpr const char* PortName = "PortName";
inline constexpr const char* Attribute = "Attribute";
inline constexpr const char* DataAttribute = "DataAttribute";
inline constexpr const char* DataType = "dataType";
inline constexpr const char* Type = "type";
inline constexpr const char* Removed = "removed";

inline constexpr const char* Direction = "direction";
inline constexpr const char* Optional = "optional";
inline constexpr const char* Hidden = "hidden";
inline constexpr const char* Private = "private";
inline constexpr const char* Native = "native";
inline constexpr const char* Types = "Types";
inline constexpr const char* ExtraTypes = "ExtraTypes";
inline constexpr const char* ExcludedTypes = "ExcludedTypes";
inline constexpr const char* TypeItem = "Type";
inline constexpr const char* Value = "Value";
inline constexpr const char* Default = "Default";

inline constexpr const char* Links = "Links";
inline constexpr const char* Parent = "Parent";
inline constexpr const char* Child = "child";
inline constexpr const char* ParentId = "parent";
inline constexpr const char* Connection = "Connection";
inline constexpr const char* From = "from";
inline constexpr const char* FromPort = "fromPort";
inline constexpr const char* To = "to";
inline constexpr const char* ToPort = "toPort";
inline constexpr const char* Alias = "Alias";
inline constexpr const char* ModelPort = "modelPort";
inline constexpr const char* OperatorRef = "operator";
inline constexpr const char* PortRef = "port";
inline constexpr const char* Body = "Body";
inline constexpr const char* Test = "Test";
inline constexpr const char* Tail = "Tail";
inline constexpr const char* Owner = "owner";
inline constexpr const char* Branch = "branch";

}  // namespace Velmar::Lattix::format::xml
