#include "Velmar/Lattix/Port.h"

#include <algorithm>
#include <cassert>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/DataFactory.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/StringData.h"
#include "Velmar/Lattix/StringListData.h"
#include "core/records.h"
#include "core/textutil.h"

namespace Velmar::Lattix {

namespace {

constexpr const wchar_t* keywordsAttribute = L"Keywords";
constexpr const wchar_t* additionalTypesAttribute = L"AdditionalTypes";
constexpr const wchar_t* excludedTypesAttribute = L"ExcludedTypes";

void AddUnique(std::vector<ObjectName>& list, const ObjectName& type) {
    if (std::find(list.begin(), list.end(), type) == list.end()) list.push_back(type);
}

std::shared_ptr<StringListData> TypeList(const std::vector<ObjectName>& types) {
    auto list = std::make_shared<StringListData>();
    for (const auto& type : types) list->Append(type.GetFullName());
    return list;
}

std::vector<std::wstring> TextsOf(const std::shared_ptr<Data>& value) {
    if (!value) return {};
    if (auto list = std::dynamic_pointer_cast<StringListData>(value)) return list->GetValue();
    return StringListData::SplitItems(value->ToString());
}

std::vector<ObjectName> TypesOf(const std::shared_ptr<Data>& value) {
    std::vector<ObjectName> types;
    for (const auto& text : TextsOf(value)) {
        ObjectName type;
        if (!ObjectName::TryParse(text, type))
            QUARN_THROW(L"\"" + text + L"\" is not a data type name: Invalid full name format.");
        AddUnique(types, type);
    }
    return types;
}

Port::AttributeMap CloneMap(const Port::AttributeMap& map) {
    Port::AttributeMap copy;
    for (const auto& [name, value] : map) copy[name] = value ? value->Clone() : nullptr;
    return copy;
}

}  // namespace

std::shared_ptr<Port> Port::Create(const std::wstring& name, PortDirection direction) {
    return std::make_shared<Port>(name, direction);
}

Port::Port(std::wstring name, PortDirection direction) : portData(std::make_shared<portRecord>()) {
    auto shape = std::make_shared<portShape>();
    shape->name = std::move(name);
    portData->shape = std::move(shape);
    portData->ownShape = true;
    portData->direction = direction;
}

Port::Port(std::shared_ptr<portRecord> record) : portData(std::move(record)) {
    // The record may still be under construction here (a declared port makes the two in one
    // block); its maker sets the shape before the port is used.
    assert(portData);
}

Port::~Port() = default;

std::wstring Port::GetName() const {
    return portData->Name();
}
std::wstring Port::GetDisplayName() const {
    const auto& shape = *portData->shape;
    return shape.displayName.empty() ? shape.name : shape.displayName;
}
void Port::SetDisplayName(const std::wstring& displayName) {
    if (portData->shape->displayName != displayName) portData->Edit().displayName = displayName;
}
std::wstring Port::GetDescription() const {
    return portData->shape->description;
}
void Port::SetDescription(const std::wstring& description) {
    if (portData->shape->description != description) portData->Edit().description = description;
}
std::vector<std::wstring> Port::GetKeywords() const {
    return portData->shape->keywords;
}
void Port::SetKeywords(const std::vector<std::wstring>& keywords) {
    if (portData->shape->keywords != keywords) portData->Edit().keywords = keywords;
}

PortDirection Port::GetDirection() const {
    return portData->direction;
}
bool Port::IsInput() const {
    return portData->direction == PortDirection::Input;
}
bool Port::IsOutput() const {
    return portData->direction == PortDirection::Output;
}
bool Port::IsOptional() const {
    return portData->optional;
}
void Port::SetOptional(bool optional) {
    portData->optional = optional;
}
bool Port::IsHidden() const {
    return portData->hidden;
}
bool Port::SetIsHidden(const bool& hidden) {
    if (hidden && IsConnected()) return false;
    portData->hidden = hidden;
    return true;
}
bool Port::IsPrivate() const {
    return portData->isPrivate;
}
void Port::SetPrivate(bool isPrivate) {
    portData->isPrivate = isPrivate;
}
bool Port::IsNative() const {
    return portData->native;
}
void Port::SetNative(bool native) {
    portData->native = native;
}

std::vector<ObjectName> Port::GetSupportedDataTypes() const {
    const auto& shape = *portData->shape;
    std::vector<ObjectName> result;
    for (const auto* list : {&shape.supported, &shape.extra})
        for (const auto& type : *list)
            if (std::find(shape.excluded.begin(), shape.excluded.end(), type) ==
                shape.excluded.end())
                AddUnique(result, type);
    return result;
}
std::vector<ObjectName> Port::GetDeclaredSupportedTypes() const {
    return portData->shape->supported;
}
void Port::SetSupportedTypes(const std::vector<ObjectName>& types) {
    std::vector<ObjectName> unique;
    unique.reserve(types.size());
    for (const auto& type : types) AddUnique(unique, type);
    if (portData->shape->supported != unique) portData->Edit().supported = std::move(unique);
}
void Port::AddSupportedType(const ObjectName& type) {
    const auto& supported = portData->shape->supported;
    if (std::find(supported.begin(), supported.end(), type) == supported.end())
        portData->Edit().supported.push_back(type);
}
void Port::ClearSupportedTypes() {
    if (!portData->shape->supported.empty()) portData->Edit().supported.clear();
}
std::vector<ObjectName> Port::GetExtraSupportedTypes() const {
    return portData->shape->extra;
}
void Port::AddExtraSupportedType(const ObjectName& type) {
    const auto& extra = portData->shape->extra;
    if (std::find(extra.begin(), extra.end(), type) == extra.end())
        portData->Edit().extra.push_back(type);
}
void Port::ClearExtraSupportedTypes() {
    if (!portData->shape->extra.empty()) portData->Edit().extra.clear();
}
std::vector<ObjectName> Port::GetExcludedTypes() const {
    return portData->shape->excluded;
}
void Port::AddExcludedType(const ObjectName& type) {
    const auto& excluded = portData->shape->excluded;
    if (std::find(excluded.begin(), excluded.end(), type) == excluded.end())
        portData->Edit().excluded.push_back(type);
}
void Port::ClearExcludedTypes() {
    if (!portData->shape->excluded.empty()) portData->Edit().excluded.clear();
}

bool Port::SupportsType(const ObjectName& type) const {
    // Walks the lists in place: this runs for every value set, and GetSupportedDataTypes copies.
    static const ObjectName generic = Data::DefaultTypeName();
    const auto& shape = *portData->shape;
    const auto& excluded = shape.excluded;
    auto isExcluded = [&excluded](const ObjectName& candidate) {
        return std::find(excluded.begin(), excluded.end(), candidate) != excluded.end();
    };
    if (isExcluded(type)) return false;
    bool any = false;
    bool acceptsAll = false;
    for (const auto* list : {&shape.supported, &shape.extra}) {
        for (const auto& candidate : *list) {
            if (isExcluded(candidate)) continue;
            if (candidate == type) return true;
            any = true;
            acceptsAll = acceptsAll || candidate == generic;
        }
    }
    return !any || acceptsAll;
}

std::shared_ptr<Data> Port::GetExistingData(bool withDefault) const {
    if (portData->data || !withDefault) return portData->data;
    return portData->defaultData;
}
std::shared_ptr<Data> Port::GetData() const {
    return portData->data;
}
std::shared_ptr<Data> Port::GetDefaultData() const {
    return portData->defaultData;
}
bool Port::HasData() const {
    return portData->data != nullptr;
}

namespace {
std::wstring Describe(const Port& port) {
    std::wstring text = L"Port \"" + port.GetName() + L"\"";
    if (auto op = port.TryGetOperator()) text += L" of operator \"" + op->GetDisplayName() + L"\"";
    return text;
}

void CheckType(const Port& port, const std::shared_ptr<Data>& data) {
    if (!data || port.SupportsType(data->GetDataTypeName())) return;
    std::vector<std::wstring> names;
    for (const auto& type : port.GetSupportedDataTypes()) names.push_back(type.GetFullName());
    QUARN_THROW(Describe(port) + L" does not accept data of type " +
                data->GetDataTypeName().GetFullName() + L" (it accepts " +
                (names.empty() ? std::wstring(L"none") : detail::Join(names, L", ")) + L").");
}
}  // namespace

void Port::SetData(const std::shared_ptr<Data>& data) {
    CheckType(*this, data);
    auto owner = TryGetOperator();
    if (owner) LinkAccess::Validate(*owner, *this, data);
    portData->data = data;
    if (owner) LinkAccess::Changed(*owner, shared_from_this());
}

void Port::ClearData() {
    SetData(nullptr);
}

void Port::SetDefaultData(const std::shared_ptr<Data>& data) {
    CheckType(*this, data);
    portData->defaultData = data;
}

bool Port::SetDataFromString(const std::wstring& text) {
    if (text.empty()) {
        SetData(nullptr);
        return true;
    }
    std::vector<ObjectName> candidates;
    const std::vector<ObjectName> open = {IntData::DefaultTypeName(), DoubleData::DefaultTypeName(),
                                          BoolData::DefaultTypeName(),
                                          StringData::DefaultTypeName()};
    auto types = GetSupportedDataTypes();
    if (types.empty()) types.push_back(Data::DefaultTypeName());
    for (const auto& type : types) {
        if (type == Data::DefaultTypeName())
            for (const auto& guess : open) AddUnique(candidates, guess);
        else
            AddUnique(candidates, type);
    }
    for (const auto& type : candidates) {
        if (!SupportsType(type)) continue;
        auto value = DataFactory::TryCreate(type);
        if (!value) continue;
        try {
            value->FromString(text);
        } catch (const QuarnLog::Exception&) {
            continue;  // this type does not read the text; the next one may
        }
        SetData(value);
        return true;
    }
    return false;
}

Port::AttributeMap Port::GetAttributeMap() const {
    auto map = portData->attributes;
    const auto& shape = *portData->shape;
    if (!shape.keywords.empty())
        map[keywordsAttribute] = std::make_shared<StringListData>(shape.keywords);
    if (!shape.extra.empty()) map[additionalTypesAttribute] = TypeList(shape.extra);
    if (!shape.excluded.empty()) map[excludedTypesAttribute] = TypeList(shape.excluded);
    return map;
}

std::shared_ptr<Data> Port::GetAttribute(const std::wstring& name) const {
    auto map = GetAttributeMap();
    auto found = map.find(name);
    return found == map.end() ? nullptr : found->second;
}

bool Port::HasAttribute(const std::wstring& name) const {
    return GetAttributeMap().count(name) > 0;
}

void Port::SetAttribute(const std::wstring& name, const std::shared_ptr<Data>& value) {
    if (name.empty()) QUARN_THROW(Describe(*this) + L": an attribute needs a name.");
    if (name == keywordsAttribute) {
        portData->Edit().keywords = TextsOf(value);
    } else if (name == additionalTypesAttribute) {
        portData->Edit().extra = TypesOf(value);
    } else if (name == excludedTypesAttribute) {
        portData->Edit().excluded = TypesOf(value);
    } else {
        portData->attributes[name] = value;
    }
}

bool Port::RemoveAttribute(const std::wstring& name) {
    if (name == keywordsAttribute || name == additionalTypesAttribute ||
        name == excludedTypesAttribute) {
        bool had = HasAttribute(name);
        SetAttribute(name, nullptr);
        return had;
    }
    return portData->attributes.erase(name) > 0;
}

Port::DataTypeAttributeMapMap Port::GetDataTypeAttributeMapMap() const {
    return portData->dataTypeAttributes;
}

Port::DataTypeAttributeMapMap Port::GetDataTypeAttributeMapMapInherited() const {
    DataTypeAttributeMapMap inherited;
    for (const auto& inner : portData->innerAliased) {
        auto merged = inner->GetDataTypeAttributeMapMapInherited();
        for (const auto& [type, map] : inner->GetDataTypeAttributeMapMap())
            for (const auto& [name, value] : map) merged[type][name] = value;
        for (const auto& [type, map] : merged)
            for (const auto& [name, value] : map) inherited[type].emplace(name, value);
    }
    return inherited;
}

Port::AttributeMap Port::GetDataTypeAttributeMap(const ObjectName& type) const {
    AttributeMap result;
    auto inherited = GetDataTypeAttributeMapMapInherited();
    auto key = type.GetFullName();
    if (auto found = inherited.find(key); found != inherited.end()) result = found->second;
    if (auto found = portData->dataTypeAttributes.find(key);
        found != portData->dataTypeAttributes.end())
        for (const auto& [name, value] : found->second) result[name] = value;
    return result;
}

void Port::SetDataTypeAttribute(const ObjectName& type, const std::wstring& name,
                                const std::shared_ptr<Data>& value) {
    if (type.GetNamespace().empty() || type.GetName().empty() || name.empty())
        QUARN_THROW(Describe(*this) + L": a data attribute needs a data type and a name (got \"" +
                    type.GetFullName() + L"\", \"" + name + L"\").");
    portData->dataTypeAttributes[type.GetFullName()][name] = value;
}

bool Port::RemoveDataTypeAttribute(const ObjectName& type, const std::wstring& name) {
    auto found = portData->dataTypeAttributes.find(type.GetFullName());
    if (found == portData->dataTypeAttributes.end() || found->second.erase(name) == 0) return false;
    if (found->second.empty()) portData->dataTypeAttributes.erase(found);
    return true;
}

std::shared_ptr<Operator> Port::TryGetOperator() const {
    return portData->owner.lock();
}

bool Port::IsConnected() const {
    return !GetConnections().empty();
}

std::vector<std::shared_ptr<PortConnection>> Port::GetConnections() const {
    std::vector<std::shared_ptr<PortConnection>> result = portData->inbound;
    for (const auto& link : portData->outbound)
        if (auto live = link.lock()) result.push_back(live);
    return result;
}

bool Port::AreAllConnectionInnerAliases() const {
    for (const auto& connection : GetConnections())
        if (!connection->IsInnerAlias()) return false;
    return true;
}

std::vector<std::shared_ptr<Port>> Port::GetInnerAliasedPorts() const {
    return portData->innerAliased;
}

bool Port::RemoveInnerAliasedPort(const std::shared_ptr<Port>& innerPort) {
    auto& inner = portData->innerAliased;
    auto found = std::find(inner.begin(), inner.end(), innerPort);
    if (!innerPort || found == inner.end()) return false;
    inner.erase(found);
    auto self = shared_from_this();
    if (LinkAccess::Of(*innerPort).aliasingPort.lock() == self)
        LinkAccess::Of(*innerPort).aliasingPort.reset();
    for (const auto& connection : GetConnections()) {
        if (!connection->IsInnerAlias()) continue;
        if (connection->GetParentPort() == innerPort || connection->GetChildPort() == innerPort)
            LinkAccess::Detach(connection);
    }
    return true;
}

std::shared_ptr<Port> Port::GetAliasingPort() const {
    return portData->aliasingPort.lock();
}

void Port::CopyContentsFrom(const Port& other) {
    if (&other == this) return;
    const auto& source = *other.portData;
    auto& target = *portData;
    // The name stays; everything else of the shape is the other port's.
    auto name = target.Name();
    auto shape = std::make_shared<portShape>(*source.shape);
    shape->name = std::move(name);
    target.shape = std::move(shape);
    target.ownShape = true;
    target.direction = source.direction;
    target.optional = source.optional;
    target.hidden = source.hidden && !IsConnected();
    target.isPrivate = source.isPrivate;
    target.native = source.native;
    target.data = source.data ? source.data->Clone() : nullptr;
    target.defaultData = source.defaultData ? source.defaultData->Clone() : nullptr;
    target.attributes = CloneMap(source.attributes);
    target.dataTypeAttributes.clear();
    for (const auto& [type, map] : source.dataTypeAttributes)
        target.dataTypeAttributes[type] = CloneMap(map);
}

}  // namespace Velmar::Lattix
